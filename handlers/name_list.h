// SPDX-License-Identifier: MIT
//
// name_list.h: looks a name up in a list, which is one line of quoted names: return ["guest",
// "anna"];
#pragma once

namespace handlers {

/// The differences between two operations' searches: the name that begins the traces, whether
/// letters of both cases count as the same, and two traces with different words.
struct NameSearch {
    const char* operation;
    bool ignoresCase;
    void (*traceList)(const char* list, const char* needle);
    void (*traceResult)(int found);
};

/// Looks a name, with its quotes, up in the first line of a new list, and removes the list unless
/// it cannot be opened.
///
/// @param name  cut at 511 characters, its quotes included
/// @return 1 or 0; -1 if there is no list, nothing in it, or no memory for it
///
/// Traces the list's size, the list with the name, and the result; or what failed.
int searchNameList(const char* path, const char* name, const NameSearch& search);

} // namespace handlers
