// SPDX-License-Identifier: MIT
#include "page/html.h"

#include "page/escape.h"
#include "page/script.h"

namespace page {

Html& Html::operator<<(Literal markup)
{
    text_ += markup.view();
    return *this;
}

Html& Html::operator<<(Text text)
{
    text_ += escape(text.bytes);
    return *this;
}

Html& Html::operator<<(const Html& part)
{
    text_ += part.text_;
    return *this;
}

Html& Html::operator<<(const Script& script)
{
    text_ += script.text();
    return *this;
}

} // namespace page
