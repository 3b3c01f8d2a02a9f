#include "host/page/pictures.h"

#include "host/job_files.h"
#include "host/page/report_page.h"
#include "host/page/spectrogram_picture.h"

Pictures::Pictures(const CleanJob& job, const AudioFormat& format) {
    if (!job.reportPage.empty()) {
        CheckSideFile(job, job.reportPage);
        mPage.emplace(job.reportPage);
    }
    if (!job.spectrogram.empty()) {
        CheckSideFile(job, job.spectrogram);
        mSpectrogram.emplace(job.spectrogram);
    }
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
