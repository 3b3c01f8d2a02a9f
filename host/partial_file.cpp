#include "host/partial_file.h"

#include <cerrno>
#include <optional>
#include <random>
#include <system_error>

#include "host/failure.h"
#include "host/follow_links.h"

namespace fs = std::filesystem;

namespace {

constexpr const char* kExists = "exists; --force replaces it";

}  // namespace

PartialFile::PartialFile(const std::string& path, bool replace) : mPath(path), mReplaces(replace) {
    CheckPath(path, replace);
    const std::optional<fs::path> target = FollowLinks(path);
    if (!target) {
        Fail(ELOOP);
    }
    mTarget = *target;
    std::error_code error;
    const fs::file_status replaced = fs::status(mTarget, error);
    const fs::path partial = PartialPath(mTarget);
    if (!mOutput.Create(
            partial, fs::exists(replaced) ? std::optional(replaced.permissions()) : std::nullopt)) {
        Fail();
    }
    mPartial = partial;
}

PartialFile::~PartialFile() {
    std::error_code ignored;
    fs::remove(mPartial, ignored);
}

void PartialFile::CheckPath(const std::string& path, bool replace) {
    std::error_code error;
    if (!replace && fs::exists(fs::symlink_status(path, error))) {
        throw Failure(path, kExists);
    }
    const fs::file_status status = fs::status(path, error);
    if (fs::exists(status) && !fs::is_regular_file(status)) {
        throw Failure(path, "not a regular file");
    }
    // The rename at the end would replace a read-only file as well.
    const int refused = fs::is_regular_file(status) ? OutputFile::MayBeReplaced(path) : 0;
    if (status.type() == fs::file_type::none || refused != 0) {
        throw Failure(path, "cannot be written", refused == 0 ? error.value() : refused);
    }
}

void PartialFile::Write(const std::string& bytes) {
    const auto count = static_cast<sf_count_t>(bytes.size());
    if (mOutput.Write(bytes.data(), count) != count) {
        Fail();
    }
}

void PartialFile::Commit() {
    if (!mOutput.Close()) {
        Fail();
    }
    const int error = OutputFile::Rename(mPartial, mTarget, mReplaces);
    if (error == EEXIST && !mReplaces) {
        throw Failure(mPath, kExists);
    }
    if (error != 0) {
        Fail(error);
    }
}

void PartialFile::Fail(int error) const {
    throw Failure(mPath, "cannot be written", error == 0 ? mOutput.Error() : error);
}

fs::path PartialPath(const fs::path& target) {
    return target.parent_path() /
           (".audio-filter-" + std::to_string(std::random_device()()) + ".partial");
}
