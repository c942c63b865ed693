// SPDX-License-Identifier: MIT
//
// private_files.h: what the pages keep for themselves: folders of mode 0700 and files of mode 0600
// that belong to the account that the pages run as. Whatever else stands in such a place is not
// believed. All of these throw std::system_error or std::runtime_error if something is not as it
// has to be.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace page {

/// A descriptor that is closed in the end, and with it a lock that it holds.
class Descriptor {
  public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor();
    Descriptor(Descriptor&& other) noexcept;
    Descriptor& operator=(Descriptor&&) = delete;
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    [[nodiscard]] int number() const { return number_; }

  private:
    int number_;
};

/// Makes a folder if it is not there. The folder that it stands in has to be there.
void requirePrivateFolder(const std::string& path);

/// Opens a file for reading and writing, and makes it if it is not there.
[[nodiscard]] Descriptor openPrivateFile(const std::string& path);

/// The same, and waits until nobody else holds its lock.
[[nodiscard]] Descriptor lockPrivateFile(const std::string& path);

/// The content of a file, of which at most 64 KiB are read; nothing if there is no such file.
[[nodiscard]] std::optional<std::string> readPrivateFile(const std::string& path);

/// Puts a whole file in place of a former one, if there is one. It is on the disk when this
/// returns.
void replacePrivateFile(const std::string& path, std::string_view content);

} // namespace page
