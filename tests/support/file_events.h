// SPDX-License-Identifier: MIT
//
// file_events.h: records the order in which a folder's files are written, closed and removed.
#pragma once

#include <array>
#include <cstddef>
#include <sys/inotify.h>
#include <unistd.h>

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace root {

/// Watches a folder as long as the object exists.
class FileEvents {
  public:
    explicit FileEvents(const std::string& folder)
        : queue_(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
    {
        EXPECT_GE(::inotify_add_watch(queue_, folder.c_str(), kKinds), 0);
    }

    ~FileEvents() { ::close(queue_); }

    FileEvents(const FileEvents&) = delete;
    FileEvents& operator=(const FileEvents&) = delete;

    /// The events since the last call, each as "write", "close" or "remove" and the file's name.
    /// Several writes in a row count once.
    [[nodiscard]] std::vector<std::string> happened() const
    {
        std::vector<std::string> events;
        alignas(inotify_event) std::array<char, 4096> bytes;
        for (ssize_t size = 0; (size = ::read(queue_, bytes.data(), bytes.size())) > 0;) {
            for (ssize_t at = 0; at < size;) {
                const auto* event =
                    reinterpret_cast<const inotify_event*>(&bytes[static_cast<std::size_t>(at)]);
                events.push_back(kindOf(event->mask) + " " + event->name);
                at += static_cast<ssize_t>(sizeof *event + event->len);
            }
        }
        return events;
    }

  private:
    static constexpr unsigned kKinds = IN_MODIFY | IN_CLOSE | IN_DELETE;

    static std::string kindOf(unsigned mask)
    {
        if ((mask & IN_MODIFY) != 0) {
            return "write";
        }
        return ((mask & IN_DELETE) != 0) ? "remove" : "close";
    }

    int queue_;
};

} // namespace root
