// SPDX-License-Identifier: MIT
//
// upload.h: an upload of the private file ("spvt") moves the former file away before it makes the
// new one. A process that is killed in between leaves an incomplete file, or none. So the service
// writes a note before each upload and removes it afterwards. If the upload was cut off, the
// service repairs the file from the note: at once, or at its own next start.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace service {

/// The service's folder, mode 0700. A restart of the appliance removes it, and the files that
/// uploads leave in /tmp, too.
inline constexpr const char* kRunFolder = "/run/vokcontrol";

/// The new private file in a request; nothing if the request is not an upload, or if its handler
/// refuses it before it touches any file.
[[nodiscard]] std::optional<std::string> uploadedFile(std::string_view request);

/// The note of an upload that runs: FOLDER/upload. It is never incomplete. The upload's process and
/// those that it starts hold a lock on it; nothing is repaired while one of them runs.
class Upload {
  public:
    explicit Upload(std::string folder = kRunFolder);
    ~Upload();
    Upload(const Upload&) = delete;
    Upload& operator=(const Upload&) = delete;

    /// Writes the note; makes the folder if it does not exist.
    /// @return false if that fails (logged): the upload must not run
    [[nodiscard]] bool begin(const std::string& fresh);

    /// The descriptor that the upload's process must keep open, because it holds the lock; or -1.
    [[nodiscard]] int descriptor() const { return descriptor_; }

    /// Writes this process's group into the note.
    /// @param descriptor  of the note in this process
    static void claim(int descriptor);

    /// Closes the note here, so that only the upload's process holds the lock.
    void handOver();

    /// Removes the note after the upload's process has ended without a failure.
    void end() const;

    /// If there is a note, ends the processes of its upload, repairs the private file and removes
    /// the note; logs what was done.
    /// @return false if that fails (logged); the note stays
    [[nodiscard]] bool repair() const;

  private:
    /// The path at which a note is written before it is renamed.
    [[nodiscard]] std::string madePath() const;

    std::string folder_;
    std::string path_;
    int descriptor_ = -1;
};

} // namespace service
