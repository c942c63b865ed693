// SPDX-License-Identifier: MIT
#include "service/private_file.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <memory>
#include <openssl/evp.h>
#include <span>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

#include "core/bytes.h"

namespace fs = std::filesystem;

namespace service {
namespace {

constexpr std::string_view kRegular = "file ";

/// A digest of bytes that are added piece by piece.
class Digest {
  public:
    Digest() : context_(::EVP_MD_CTX_new(), ::EVP_MD_CTX_free)
    {
        ::EVP_DigestInit_ex(context_.get(), ::EVP_sha256(), nullptr);
    }

    void add(std::string_view bytes)
    {
        ::EVP_DigestUpdate(context_.get(), bytes.data(), bytes.size());
        size_ += bytes.size();
    }

    /// The line that describes a regular file with these bytes.
    [[nodiscard]] std::string line() const
    {
        std::array<unsigned char, EVP_MAX_MD_SIZE> bytes{};
        unsigned size = 0;
        ::EVP_DigestFinal_ex(context_.get(), bytes.data(), &size);
        std::string text = std::string(kRegular) + std::to_string(size_) + " ";
        core::appendHex(text, std::span(bytes).first(size));
        return text;
    }

  private:
    std::unique_ptr<EVP_MD_CTX, void (*)(EVP_MD_CTX*)> context_;
    std::size_t size_ = 0;
};

std::string describeContent(const std::string& path)
{
    Digest digest;
    std::ifstream file(path, std::ios::binary);
    std::array<char, 1 << 16> piece;
    while (file.read(piece.data(), piece.size()), file.gcount() > 0) {
        digest.add({piece.data(), static_cast<std::size_t>(file.gcount())});
    }
    return digest.line();
}

std::string describeLink(const std::string& path)
{
    std::error_code ignored;
    std::string target = fs::read_symlink(path, ignored);
    std::ranges::replace(target, '\n', ' ');
    return "link " + target;
}

std::string describeBytes(std::string_view bytes)
{
    Digest digest;
    digest.add(bytes);
    return digest.line();
}

bool isRegular(const std::string& line)
{
    return line.starts_with(kRegular);
}

/// Writes a file's content to the disk.
bool flush(const std::string& path)
{
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    const bool isFlushed = file >= 0 && ::fsync(file) == 0;
    ::close(file);
    return isFlushed;
}

bool isLink(const std::string& path)
{
    std::error_code ignored;
    return fs::is_symlink(fs::symlink_status(path, ignored));
}

/// Renames a file that was made beside a path to that path.
bool moveInto(const std::string& made, const std::string& path)
{
    return ::rename(made.c_str(), path.c_str()) == 0;
}

std::string beside(const std::string& path)
{
    return path + ".new";
}

/// Moves the saved file back to the private file's path, which is on another file system.
bool copyBack()
{
    const std::string made = beside(kPrivateFile);
    std::error_code error;
    fs::remove_all(made, error);
    fs::copy(kSavedFile, made, fs::copy_options::copy_symlinks | fs::copy_options::recursive,
             error);
    if (error || (!isLink(made) && !flush(made)) || !moveInto(made, kPrivateFile)) {
        fs::remove_all(made, error);
        return false;
    }
    fs::remove_all(kSavedFile, error);
    return true;
}

bool putBack()
{
    return ::rename(kSavedFile, kPrivateFile) == 0 || (errno == EXDEV && copyBack());
}

/// The path that the private file's path leads to, if it is a link.
std::string realPath()
{
    std::error_code error;
    const fs::path path = fs::weakly_canonical(kPrivateFile, error);
    return error ? std::string(kPrivateFile) : path.string();
}

bool complete(const std::string& fresh)
{
    constexpr mode_t kOthersBits = 077;
    const std::string path = realPath();
    const std::string made = beside(path);
    std::error_code ignored;
    fs::remove_all(made, ignored);
    const mode_t before = ::umask(kOthersBits);
    std::ofstream file(made, std::ios::binary | std::ios::trunc);
    ::umask(before);
    file << fresh;
    file.close();
    if (!file || !flush(made) || !moveInto(made, path)) {
        fs::remove_all(made, ignored);
        return false;
    }
    return true;
}

/// Removes an incomplete file: it must never be sent, and a repair may need its room.
void removePart()
{
    if (isRegular(describeFile(kPrivateFile, Links::kFollowed))) {
        ::unlink(realPath().c_str());
    }
}

/// Removes the saved file. Anything else at its path is not a work file, and stays.
void dropSaved()
{
    std::error_code ignored;
    const fs::file_status status = fs::symlink_status(kSavedFile, ignored);
    if (fs::is_regular_file(status) || fs::is_symlink(status)) {
        ::unlink(kSavedFile);
    }
}

/// Whether the saved file can be copied: mv may have moved a device or a socket there, too.
bool canCopySaved()
{
    std::error_code ignored;
    const fs::file_type type = fs::symlink_status(kSavedFile, ignored).type();
    return type == fs::file_type::regular || type == fs::file_type::symlink ||
           type == fs::file_type::directory;
}

/// Tries a way of repair. If it fails, the disk may be too full for a second file: it removes the
/// incomplete one and tries again.
bool isDone(const auto& way)
{
    if (way()) {
        return true;
    }
    removePart();
    return way();
}

/// The repair, except the removal of the saved file.
Repair decide(const Plan& plan)
{
    const Seen now = inspect(kPrivateFile);
    if (now == plan.former) {
        return Repair::kFormerStayed;
    }
    const bool isSaved = plan.former.itself != kNothingThere && now.itself != plan.former.itself &&
                         describeFile(kSavedFile, Links::kAsTheyAre) == plan.former.itself;
    if (isSaved) {
        return isDone(putBack)  ? Repair::kFormerBack
               : canCopySaved() ? Repair::kFailed
                                : Repair::kLeftAlone;
    }
    if (!isRegular(now.content) && now.content != kNothingThere) {
        return Repair::kLeftAlone;
    }
    const bool isWhole = now.content == describeBytes(plan.fresh);
    return isWhole || isDone([&] { return complete(plan.fresh); }) ? Repair::kNewWhole
                                                                   : Repair::kFailed;
}

} // namespace

std::string describeFile(const std::string& path, Links links)
{
    struct stat status = {};
    const auto ask = (links == Links::kFollowed) ? ::stat : ::lstat;
    if (ask(path.c_str(), &status) != 0) {
        return kNothingThere;
    }
    if (S_ISREG(status.st_mode)) {
        return describeContent(path);
    }
    if (S_ISLNK(status.st_mode)) {
        return describeLink(path);
    }
    return "other " + std::to_string(status.st_mode) + " " + std::to_string(status.st_rdev);
}

Seen inspect(const std::string& path)
{
    return {describeFile(path, Links::kAsTheyAre), describeFile(path, Links::kFollowed)};
}

Repair repairPrivateFile(const Plan& plan)
{
    const Repair repair = decide(plan);
    if (repair != Repair::kFailed) {
        dropSaved();
    }
    return repair;
}

} // namespace service
