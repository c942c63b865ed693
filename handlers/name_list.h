// SPDX-License-Identifier: MIT
//
// name_list.h: the one-line lists of quoted names, such as return ["guest", "anna"]; and how a name
// is looked up in one.
#pragma once

namespace handlers {

/// What tells one operation's search from another's: its name, which begins its traces, whether
/// letters of both cases are the same to it, and the two traces that are worded on their own.
struct NameSearch {
    const char* operation;
    bool ignoresCase;
    void (*traceList)(const char* list, const char* needle);
    void (*traceResult)(int found);
};

/// Looks a name, with its quotes, up in the first line of a list that has just been made, and
/// removes the list unless it cannot be opened.
///
/// @param name  with its quotes it is cut at 511 characters
/// @return 1 or 0; -1 when there is no list, nothing in it, or no memory for it
///
/// Traces the list's size, the list with the name, and the result; or what failed.
int searchNameList(const char* path, const char* name, const NameSearch& search);

} // namespace handlers
