#include "host/batch/batch_plan.h"

#include <filesystem>
#include <map>
#include <set>
#include <system_error>
#include <utility>

#include "host/batch/find_recordings.h"
#include "host/failure.h"
#include "host/follow_links.h"
#include "host/media_extensions.h"

namespace {

namespace fs = std::filesystem;

/// Equal for all names of a file, also of one that does not exist yet.
std::string IdentityOf(const std::string& path) {
    std::error_code error;
    const fs::path target = fs::absolute(FollowLinks(path).value_or(path), error);
    const fs::path canonical = fs::weakly_canonical(target, error);
    return (error ? target : canonical).string();
}

class Planner {
public:
    explicit Planner(const BatchRequest& request) : mRequest(request) {}

    std::vector<PlannedFile> Run() {
        for (const std::string& path : mRequest.paths) {
            AddNamed(path);
        }
        for (const auto& [identity, file] : mOutputs) {
            if (mInputs.contains(identity)) {
                throw Failure(file.output, "is also an input");
            }
        }
        return std::move(mFiles);
    }

private:
    struct Output {
        std::string output;
        std::string input;
        std::string inputIdentity;
    };

    void AddNamed(const std::string& path) {
        std::error_code error;
        const fs::file_status status = fs::status(path, error);
        if (status.type() == fs::file_type::not_found) {
            Drop(path, PlannedFile::State::kFailed, "no such file");
        } else if (!fs::exists(status)) {
            Drop(path, PlannedFile::State::kFailed,
                 Failure::WithCause("cannot be read", error.value()));
        } else if (!fs::is_directory(status)) {
            IsOutput(path, fs::path(path).filename())
                ? Drop(path, PlannedFile::State::kSkipped, "has the suffix of outputs")
                : Add(path, fs::path(path).filename());
        } else if (mRequest.recursive) {
            AddFolder(path);
        } else {
            Drop(path, PlannedFile::State::kFailed, "is a folder; --recursive cleans its files");
        }
    }

    void AddFolder(const std::string& folder) {
        for (const FoundFile& file : FindRecordings(folder, mRequest.outputDir)) {
            if (!file.problem.empty()) {
                Drop(file.path, PlannedFile::State::kFailed, file.problem);
            } else if (!IsOutput(file.path, file.below)) {
                Add(file.path, file.below);
            }
        }
    }

    /// Whether the file lies where outputs are written, and has the name of one.
    bool IsOutput(const fs::path& path, const fs::path& below) const {
        std::error_code error;
        return !mRequest.suffix.empty() && path.stem().string().ends_with(mRequest.suffix) &&
               (mRequest.outputDir.empty() ||
                fs::equivalent(mRequest.outputDir / below.parent_path(),
                               fs::absolute(path, error).parent_path(), error));
    }

    /// @param below the output folder
    void Add(const std::string& path, const fs::path& below) {
        std::error_code error;
        if (!fs::is_regular_file(path, error)) {
            Drop(path, PlannedFile::State::kFailed, "not a regular file");
            return;
        }
        PlannedFile file = {path, OutputOf(path, below), PlannedFile::State::kToClean, "", 0};
        const std::string identity = IdentityOf(path);
        const auto [known, isNew] =
            mOutputs.try_emplace(IdentityOf(file.output), Output{file.output, path, identity});
        if (!isNew && known->second.inputIdentity == identity) {
            return;  // the same file once more
        }
        if (!isNew) {
            throw Failure(file.output, "would be the output of both " +
                                           Failure::Printable(known->second.input) + " and " +
                                           Failure::Printable(path));
        }
        mInputs.insert(identity);
        file.bytes = static_cast<std::int64_t>(fs::file_size(path, error));
        if (!mRequest.replace && fs::exists(fs::symlink_status(file.output, error))) {
            file.state =
                mRequest.skipExisting ? PlannedFile::State::kSkipped : PlannedFile::State::kFailed;
            file.reason = Failure::Printable(file.output) + " exists";
        }
        mFiles.push_back(std::move(file));
    }

    std::string OutputOf(const fs::path& input, const fs::path& below) const {
        const std::string extension =
            mRequest.extension.empty() ? OutputExtension(input) : "." + mRequest.extension;
        const fs::path folder = mRequest.outputDir.empty()
                                    ? input.parent_path()
                                    : mRequest.outputDir / below.parent_path();
        return (folder / (input.stem().string() + mRequest.suffix + extension)).string();
    }

    void Drop(const std::string& path, PlannedFile::State state, const std::string& reason) {
        mFiles.push_back({path, "", state, reason, 0});
    }

    const BatchRequest& mRequest;
    std::vector<PlannedFile> mFiles;
    std::set<std::string> mInputs;           ///< identities
    std::map<std::string, Output> mOutputs;  ///< by identity
};

}  // namespace

std::vector<PlannedFile> PlanBatch(const BatchRequest& request) {
    return Planner(request).Run();
}
