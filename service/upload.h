// SPDX-License-Identifier: MIT
//
// upload.h: an upload of the private file ("spvt") moves the former file away before it makes the
// new one, so that a process that is killed in between leaves a part of a file, or none. While an
// upload is in hand, a note in the service's folder says so, from which the service repairs what
// such a process has left: at once, or after its own next start.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace service {

/// The service's folder, mode 0700. It is gone after a restart of the appliance, as what uploads
/// leave in /tmp is.
inline constexpr const char* kRunFolder = "/run/vokcontrol";

/// The file that a request brings; nothing for a request that is no upload, or one that its handler
/// refuses before it touches any file.
[[nodiscard]] std::optional<std::string> uploadedFile(std::string_view request);

/// The note of the upload in hand: FOLDER/upload. It is made whole or not at all. The process of
/// the upload and what that starts hold a lock on it, so that nothing is repaired while one of them
/// still runs.
class Upload {
  public:
    explicit Upload(std::string folder = kRunFolder);
    ~Upload();
    Upload(const Upload&) = delete;
    Upload& operator=(const Upload&) = delete;

    /// Notes that an upload is in hand; makes the folder where there is none yet.
    /// @return false when it cannot be noted (logged): the upload must not run
    [[nodiscard]] bool begin(const std::string& fresh);

    /// What the process of the upload has to keep open, for it to hold the lock; -1 without one.
    [[nodiscard]] int descriptor() const { return descriptor_; }

    /// Writes this process's group into the note, by that descriptor as this process has it.
    static void claim(int descriptor);

    /// Leaves the lock to the process that was started.
    void handOver();

    /// The upload's process has ended by itself: removes the note.
    void end() const;

    /// Where there is a note, ends what still runs of its upload, brings the private file into
    /// order and removes the note; logs what was done.
    /// @return false when that has failed (logged); the note stays
    [[nodiscard]] bool repair() const;

  private:
    /// Where a note is written before it has its name.
    [[nodiscard]] std::string madePath() const;

    std::string folder_;
    std::string path_;
    int descriptor_ = -1;
};

} // namespace service
