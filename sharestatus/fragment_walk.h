// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

namespace sharestatus {

/// The names in a share list fragment, in the collector's way of walking it.
///
/// Separators (comma, quote, closing bracket) become NULs, and the walk starts behind the opening
/// bracket. Text that cannot start a name is passed over; what starts a name is one up to the next
/// NUL. Behind a name the walk goes on two characters past its first 64 bytes: it swallows the
/// separator and one more, and of a longer name it sees the rest again.
class FragmentWalk {
  public:
    /// @param line  NUL-terminated text, changed in place; without a "[" it holds no names
    explicit FragmentWalk(char* line);

    /// @return the next name, NUL-terminated and whole, or null when there is none left
    const char* next();

  private:
    const char* line_;
    std::size_t end_;
    std::size_t cursor_;
};

} // namespace sharestatus
