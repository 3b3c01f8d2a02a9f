#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "host/output_file.h"

namespace {

OutputFile& OutputOf(void* self) {
    return *static_cast<OutputFile*>(self);
}

}  // namespace

OutputFile::~OutputFile() {
    if (mFile >= 0) {
        close(mFile);  // not synced: the file is about to be removed
    }
}

bool OutputFile::Create(const std::filesystem::path& path,
                        std::optional<std::filesystem::perms> permissions) {
    // A file that only its owner may read must not be readable by others while it is written.
    const mode_t mode = permissions ? S_IRUSR | S_IWUSR : 0666;
    mFile = open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    Note(mFile >= 0);
    if (mFile >= 0 && permissions) {
        fchmod(mFile, static_cast<mode_t>(*permissions) &
                          0777U);  // best effort: not every file system supports it
    }
    return mFile >= 0;
}

SNDFILE* OutputFile::Open(SF_INFO& info) {
    SF_VIRTUAL_IO callbacks = Callbacks();
    return sf_open_virtual(&callbacks, SFM_WRITE, &info, this);
}

bool OutputFile::Close() {
    if (mFile >= 0) {
        Note(fsync(mFile) == 0);
        Note(close(mFile) == 0);
        mFile = -1;
    }
    return mError == 0;
}

int OutputFile::MayBeReplaced(const std::filesystem::path& path) {
    return faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0 ? 0 : errno;
}

int OutputFile::Rename(const std::filesystem::path& from, const std::filesystem::path& to,
                       bool replace) {
    if (!replace) {
        if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) {
            return 0;
        }
        if (errno != EINVAL && errno != ENOSYS) {
            return errno;
        }
        // The file system cannot refuse to replace.
        struct stat status = {};
        if (lstat(to.c_str(), &status) == 0) {
            return EEXIST;
        }
    }
    return rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}

SF_VIRTUAL_IO OutputFile::Callbacks() {
    SF_VIRTUAL_IO callbacks = {};
    callbacks.get_filelen = [](void* self) { return OutputOf(self).Size(); };
    callbacks.seek = [](sf_count_t offset, int whence, void* self) {
        return OutputOf(self).Seek(offset, whence);
    };
    callbacks.read = [](void* bytes, sf_count_t count, void* self) {
        return OutputOf(self).Read(static_cast<char*>(bytes), count);
    };
    callbacks.write = [](const void* bytes, sf_count_t count, void* self) {
        return OutputOf(self).Write(static_cast<const char*>(bytes), count);
    };
    callbacks.tell = [](void* self) { return OutputOf(self).Seek(0, SEEK_CUR); };
    return callbacks;
}

void OutputFile::Note(bool done) {
    if (!done && mError == 0) {
        mError = errno;
    }
}

sf_count_t OutputFile::Size() {
    struct stat status = {};
    Note(fstat(mFile, &status) == 0);
    return status.st_size;
}

sf_count_t OutputFile::Seek(sf_count_t offset, int whence) {
    const off_t at = lseek(mFile, offset, whence);
    Note(at >= 0);
    return at;
}

sf_count_t OutputFile::Read(char* bytes, sf_count_t count) {
    return sf_count_t{read(mFile, bytes, static_cast<std::size_t>(count))};
}

sf_count_t OutputFile::Write(const char* bytes, sf_count_t count) {
    sf_count_t written = 0;
    while (written < count) {
        const ssize_t now =
            write(mFile, bytes + written, static_cast<std::size_t>(count - written));
        if (now > 0) {
            written += now;
        } else if (now == 0 || errno != EINTR) {
            Note(false);
            break;
        }
    }
    return written;
}
