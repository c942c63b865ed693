// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

namespace sharestatus {

/// Reads the names in a share list fragment, as the collector has always read them.
///
/// Separators (comma, quote, closing bracket) become NULs, and the walk starts after the opening
/// bracket. Characters that cannot start a name are skipped; a name runs from one that can to the
/// next NUL. After a name of at most 64 bytes the walk skips two characters, the separator and the
/// next. Of a longer name it skips 64 bytes and two more, and reads the rest as names again.
class FragmentWalk {
  public:
    /// @param line  NUL-terminated text, changed in place; it holds no names if it has no "["
    explicit FragmentWalk(char* line);

    /// @return the next name, NUL-terminated and whole, or null after the last one
    const char* next();

  private:
    const char* line_;
    std::size_t end_;
    std::size_t cursor_;
};

} // namespace sharestatus
