// SPDX-License-Identifier: MIT
//
// private_file.h: the file that clients keep on the appliance, as an upload finds it and as one
// that was cut off leaves it.
#pragma once

#include <string>

namespace service {

inline constexpr const char* kPrivateFile = "/etc/pelconfig/vokcontrol/vokcontrol-private.txt";
/// Where the module keeps the former file while it makes the new one.
inline constexpr const char* kSavedFile = "/tmp/vokcontrol.tmp";

/// What stands at a path, as one line that differs for whatever else may stand there: a regular
/// file's line has its size and digest, a link's its target.
enum class Links { kAsTheyAre, kFollowed };
[[nodiscard]] std::string describeFile(const std::string& path, Links links);
inline constexpr const char* kNothingThere = "none";

/// The two lines of a path.
struct Seen {
    std::string itself;  ///< links as they are
    std::string content; ///< links followed
    bool operator==(const Seen&) const = default;
};
[[nodiscard]] Seen inspect(const std::string& path);

/// What an upload was about to do when it was cut off.
struct Plan {
    Seen former;       ///< what stood at the private file's path before
    std::string fresh; ///< the new file's bytes
};

enum class Repair {
    kFormerStayed, ///< nothing had been changed, or all was back already
    kFormerBack,   ///< the former file was moved back
    kNewWhole,     ///< the new file was whole, or was completed
    kLeftAlone,    ///< what stands there is nobody's to change
    kFailed        ///< it must be tried again; the path holds no part of a file
};

/// Brings the private file into one of the two states that an upload has: the former file whole,
/// where it stands or waits in the saved file, or else the new one whole. What is no regular file
/// stays as it is. The saved file is gone afterwards, unless the repair has failed.
///
/// Writes PATH.new beside the file that it makes, and renames it.
[[nodiscard]] Repair repairPrivateFile(const Plan& plan);

} // namespace service
