// SPDX-License-Identifier: MIT
//
// private_file.h: the file that clients keep on the appliance, before an upload and after one that
// was cut off.
#pragma once

#include <string>

namespace service {

inline constexpr const char* kPrivateFile = "/etc/pelconfig/vokcontrol/vokcontrol-private.txt";
/// The module moves the former file here while it makes the new one.
inline constexpr const char* kSavedFile = "/tmp/vokcontrol.tmp";

/// Describes what is at a path in one line. Two files have the same line only if they are equal: a
/// regular file's line has its size and digest, a link's line its target.
enum class Links { kAsTheyAre, kFollowed };
[[nodiscard]] std::string describeFile(const std::string& path, Links links);
inline constexpr const char* kNothingThere = "none";

/// The two lines that describe a path.
struct Seen {
    std::string itself;  ///< a link as a link
    std::string content; ///< what a link leads to
    bool operator==(const Seen&) const = default;
};
[[nodiscard]] Seen inspect(const std::string& path);

/// An upload that was cut off: the former file and the new one.
struct Plan {
    Seen former;       ///< what was at the private file's path before
    std::string fresh; ///< the new file's bytes
};

enum class Repair {
    kFormerStayed, ///< the former file was still there, or was there again
    kFormerBack,   ///< the former file was moved back
    kNewWhole,     ///< the new file was complete, or was completed
    kLeftAlone,    ///< the path has something that is not a regular file; it was not changed
    kFailed        ///< it must be tried again; the path has no incomplete file
};

/// Makes the private file whole after an upload that was cut off: the former file, if it is still
/// at its path or is the saved file, else the new one. Anything that is not a regular file stays as
/// it is. The saved file is removed, unless the repair fails.
///
/// A file is written as PATH.new and then renamed.
[[nodiscard]] Repair repairPrivateFile(const Plan& plan);

} // namespace service
