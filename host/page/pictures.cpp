#include "host/page/pictures.h"

#include "host/job_files.h"
#include "host/page/report_page.h"
#include "host/page/spectrogram_picture.h"

namespace {

/// Opens a file unless its path is empty.
void OpenPicture(const CleanJob& job, const std::string& path, std::optional<PartialFile>& file) {
    if (path.empty()) {
        return;
    }
    CheckSideFile(job, path);
    file.emplace(path, job.replace);
}

}  // namespace

Pictures::Pictures(const CleanJob& job, const AudioFormat& format) {
    OpenPicture(job, job.reportPage, mPage);
    OpenPicture(job, job.spectrogram, mSpectrogram);
    if (mPage || mSpectrogram) {
        mHistory.emplace(format);
    }
}

void Pictures::Write(const Report& report) {
    if (!mHistory) {
        return;
    }
    mHistory->Finish();
    if (mPage) {
        mPage->Write(ReportPage(report, *mHistory));
        mPage->Commit();
    }
    if (mSpectrogram) {
        mSpectrogram->Write(SpectrogramPicture(mHistory->Columns()));
        mSpectrogram->Commit();
    }
}
