#include "host/batch/find_recordings.h"

#include <algorithm>
#include <system_error>

#include "host/failure.h"
#include "host/media_extensions.h"

namespace {

namespace fs = std::filesystem;

bool IsHidden(const fs::path& path) {
    return path.filename().string().starts_with('.');
}

class Search {
public:
    Search(fs::path root, fs::path excluded)
        : mRoot(std::move(root)), mExcluded(std::move(excluded)) {}

    std::vector<FoundFile> Run() {
        Open(mRoot);
        while (!mPending.empty()) {
            const fs::path entry = std::move(mPending.back());
            mPending.pop_back();
            Take(entry);
        }
        return std::move(mFound);
    }

private:
    void Open(const fs::path& folder) {
        std::vector<fs::path> entries;
        std::error_code error;
        for (fs::directory_iterator entry(folder, error); !error && entry != end(entry);
             entry.increment(error)) {
            if (!IsHidden(entry->path())) {
                entries.push_back(entry->path());
            }
        }
        if (error) {
            mFound.push_back(
                {folder.string(), {}, Failure::WithCause("cannot be read", error.value())});
            return;
        }
        std::sort(entries.rbegin(), entries.rend());  // the first is taken first, from the end
        mPending.insert(mPending.end(), entries.begin(), entries.end());
    }

    void Take(const fs::path& entry) {
        std::error_code error;
        if (fs::is_directory(fs::symlink_status(entry, error))) {
            if (mExcluded.empty() || !fs::equivalent(entry, mExcluded, error)) {
                Open(entry);
            }
        } else if (IsRecording(entry) && !fs::is_directory(entry, error)) {
            mFound.push_back({entry.string(), entry.lexically_relative(mRoot), ""});
        }
    }

    fs::path mRoot;
    fs::path mExcluded;
    std::vector<fs::path> mPending;  ///< the next one last
    std::vector<FoundFile> mFound;
};

}  // namespace

std::vector<FoundFile> FindRecordings(const fs::path& folder, const fs::path& excluded) {
    return Search(folder, excluded).Run();
}
