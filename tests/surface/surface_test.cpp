/// The library through the shared object and its installed headers only, in the order of the
/// headers. It links only if every class is exported whole, including private operations.

#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <vector>

#include "audio_filter/audio_filter.h"
#include "audio_filter/filter_listener.h"
#include "audio_filter/process_param.h"
#include "classifier/audio_classifier.h"
#include "classifier/complex.h"
#include "common/av_param.h"
#include "common/export.h"
#include "common/media_process.h"
#include "common/process_data.h"
#include "common/process_data_pool.h"
#include "common/process_lock.h"
#include "common/result_code.h"
#include "log/media_process_log.h"
#include "log/pr_console_log_writer.h"
#include "log/pr_file_log_writer.h"
#include "log/pr_log.h"
#include "log/pr_log_writer.h"
#include "units/audio_denoise.h"
#include "units/audio_gain.h"
#include "units/audio_mixing.h"
#include "units/ns_wrap.h"
#include "units/phase_check.h"

namespace {

TEST(Surface, Locks) {
    ProcessLock lock;
    ProcessCond cond;
    EXPECT_EQ(process_lock_init(&lock), 0);
    EXPECT_EQ(process_cond_init(&cond), 0);
    {
        const ProcessAutolock hold(&lock);
        EXPECT_EQ(process_cond_wait_time(&cond, &lock, 0), 0);
    }
    EXPECT_EQ(process_lock(&lock), 0);
    EXPECT_EQ(process_unlock(&lock), 0);
    EXPECT_EQ(process_cond_signal(&cond), 0);
    EXPECT_EQ(process_cond_wait(&cond, &lock), 0);
    EXPECT_EQ(process_cond_destroy(&cond), 0);
    EXPECT_EQ(process_lock_destroy(&lock), 0);
}

TEST(Surface, Log) {
    ASSERT_NE(pr_log, nullptr);
    PRConsoleLogParam console = {0};
    const int id = pr_log->AddLog(PROCESS_LOG_CONSOLE, &console, 3);
    EXPECT_EQ(pr_log->SetLogLevel(id, 1), RESULT_OK);
    PR_LOG_ENABLE(true);
    EXPECT_TRUE(pr_log_enalbe);
    testing::internal::CaptureStdout();
    pr_log->Debug("p", "%s", "d");
    pr_log->Info("p", "%s", "i");
    pr_log->Warn("p", "%s", "w");
    pr_log->Error("p", "%s", "e");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "p:d\np:i\np:w\np:e\n");
    PR_LOG_ENABLE(false);
    EXPECT_EQ(pr_log->RemoveLog(id), RESULT_OK);
    EXPECT_EQ(pr_log->RemoveAllLog(), RESULT_OK);
    EXPECT_FALSE(int2str_pr(GeneratePRLogId()).empty());
    EXPECT_EQ(pr_log->Find(id), pr_log->mWriters.end());
    pr_log->ReleaseAll();
    EXPECT_EQ(GetPRFormatDate().size(), 23U);
    EXPECT_EQ(GetPRFormatDate2().size(), 23U);

    PRFileLogWriter writer(2);
    EXPECT_EQ(writer.CheckPartion(), 0);
    EXPECT_EQ(writer.WriteLog(2, "p", "m", nullptr), RESULT_FAILURE);
    writer.Destroy();
    MediaProcessLog log;
    log.SetLogLevel(PROCESS_LOG_DEBUG);
    log.CloseFile();
    EXPECT_EQ(log.WriteLog(PROCESS_LOG_DEBUG, "m"), RESULT_NOT_INITIALISED);
    EXPECT_TRUE(log.Uninit());
}

TEST(Surface, Gain) {
    AudioGain gain;
    EXPECT_EQ(gain.Init(SAMPLE_FMT_S16), RESULT_OK);
    EXPECT_TRUE(gain.SetGain(1.0F));
    short s16 = 8192;
    float flt = 0.1F;
    EXPECT_EQ(gain.Process(reinterpret_cast<const char*>(&s16), 2), RESULT_OK);
    EXPECT_EQ(gain.ProcessCore2(&s16, 2), RESULT_OK);
    EXPECT_EQ(gain.ProcessCore2(&flt, 4), RESULT_OK);
    EXPECT_EQ(gain.ProcessCore(&s16, 2), RESULT_OK);
    EXPECT_EQ(gain.ProcessCore(&flt, 4), RESULT_OK);
    EXPECT_TRUE(gain.Clear());
}

TEST(Surface, Mixing) {
    const auto mixing = std::make_unique<AudioMixing>();
    EXPECT_EQ(mixing->Init(SAMPLE_FMT_S16), RESULT_OK);
    short s16[2] = {20000, 20000};
    float flt[2] = {1.0F, 0.0F};
    int count = 2;
    EXPECT_EQ(mixing->DoProcess(s16, s16, count, 2), RESULT_OK);
    EXPECT_EQ(s16[0], 29463);
    count = 2;
    EXPECT_EQ(mixing->DoProcess(flt, flt, count, 2), RESULT_OK);
    EXPECT_EQ(count, 1);
    int size = 4;
    EXPECT_EQ(mixing->Process(reinterpret_cast<char*>(s16), reinterpret_cast<char*>(s16), size, 2),
              RESULT_OK);
    EXPECT_TRUE(mixing->IsInited());
    EXPECT_TRUE(mixing->Clear());
}

TEST(Surface, PhaseCheck) {
    PhaseCheck check;
    EXPECT_EQ(check.Init(8000, false), RESULT_OK);
    short s16[2] = {1000, 1000};
    float flt[2] = {0.5F, 0.5F};
    EXPECT_EQ(check.Check(s16, 2), RESULT_OK);
    EXPECT_EQ(check.Check(flt, 2), RESULT_OK);
    EXPECT_EQ(check.Check2(s16, 2), RESULT_OK);
    EXPECT_EQ(check.Check2(flt, 2), RESULT_OK);
    EXPECT_EQ(check.GetInPhaseRatio() + check.GetOpposedPhaseRatio() + check.GetSilenceRatio(),
              1.0F);
    EXPECT_TRUE(check.IsInited());
    EXPECT_TRUE(check.Clear());
}

TEST(Surface, Suppression) {
    NSWrap wrap;
    EXPECT_TRUE(wrap.Init(32000, SAMPLE_FMT_FLT, 1));
    EXPECT_TRUE(wrap.setLevel(2));
    std::vector<char> block(1280);
    EXPECT_EQ(wrap.Process(block.data(), block.data()), RESULT_OK);
    EXPECT_TRUE(wrap.Reset());
    EXPECT_TRUE(wrap.Clear());

    AudioDenoise denoise;
    EXPECT_EQ(denoise.Init(32000, 2, SAMPLE_FMT_S16, 3), RESULT_OK);
    EXPECT_TRUE(denoise.IsInited());
    EXPECT_TRUE(denoise.Config(1));
    std::vector<char> out(4000);
    EXPECT_EQ(denoise.SplitLR(block.data(), 100), RESULT_OK);
    EXPECT_EQ(denoise.CombineLR(out.data(), 100), RESULT_OK);
    int size = 1280;
    EXPECT_EQ(denoise.Process(block.data(), out.data(), size), RESULT_OK);
    EXPECT_EQ(size, 1280);
    EXPECT_TRUE(denoise.Reset());
    EXPECT_TRUE(denoise.Clear());
}

TEST(Surface, Records) {
    VBGParams background;
    AIPar recognition;
    BeautyInitParams beauty;
    ProcessUsrData bytes;
    AVParam param;
    const BeautyInitParams beautyCopy = beauty;
    const AVParam copy = param;
    param = copy;
    param.virtualBackground = background;
    param.recognition = recognition;
    beauty = beautyCopy;
    EXPECT_EQ(param.audioSampleRate, -1);
    EXPECT_EQ(bytes.size, -1);
}

TEST(Surface, Pool) {
    ProcessDataPool pool(3, true, 10, 1000);
    char payload[4] = {1, 2, 3, 4};
    AVParam param;
    ProcessData* entry = pool.GetProcessData(payload, 4, param, 7, nullptr);
    ASSERT_NE(entry, nullptr);
    EXPECT_EQ(pool.GetFrontInputData(), entry);
    EXPECT_TRUE(pool.CheckData(entry));
    EXPECT_EQ(entry->SelfCopy()->GetRefCount(), 2);
    entry->SelfRelease();
    entry->SelfRelease();
    EXPECT_EQ(pool.GetFreeDataSize(), 3);
    EXPECT_EQ(pool.GetMaxDataSize(), 3);
    EXPECT_EQ(pool.GetUsedDataSize(), 0);
    entry = pool.GetProcessData(payload, 4, 8, nullptr);
    EXPECT_EQ(entry->WriteData(payload, 4, param, 9, nullptr), RESULT_OK);
    EXPECT_EQ(entry->WriteData(payload, 4, 9, nullptr), RESULT_OK);
    EXPECT_EQ(entry->Reset(8), 8);
    EXPECT_GE(entry->GetLastReleaseTime(), 0U);
    ProcessDataPool::DataFree(&pool, entry);
    pool.RecycleData(entry);
    pool.CheckPool();
    pool.FreeUnused();
    entry->SetFree(nullptr, nullptr);
    entry->Free();
}

TEST(Surface, Classifier) {
    AudioClassifier classifier;
    EXPECT_EQ(classifier.Init(1, 32000, SAMPLE_FMT_S16), RESULT_OK);
    EXPECT_TRUE(classifier.IsInited());
    std::vector<unsigned char> block(640);
    EXPECT_FALSE(classifier.MusicCheck(block.data(), 640));
    EXPECT_FALSE(classifier.GetRealTimeCheckRet());
    EXPECT_EQ(classifier.getSampleByte(SAMPLE_FMT_NONE), 4);
    algoParam param = classifier.getAlgoParam(44100);
    EXPECT_EQ(param.fftSize, 88198U);
    unsigned char left[4] = {};
    unsigned char right[4] = {};
    classifier.splitLR(reinterpret_cast<char*>(block.data()), left, right, 2, SAMPLE_FMT_S16);
    std::unique_ptr<float[]> signal(classifier.emphasis(block.data(), 320, 0.97F));
    std::unique_ptr<float[]> window(classifier.hammingWindow(320, 1.0F));
    classifier.hadmanMulti(signal.get(), window.get(), 320);
    float** segments = classifier.frameSeg(signal.get(), 320, 64, 32);
    ASSERT_EQ(classifier.mFrameCount, 9);
    classifier.lowEnergyFrameRate(segments, 64, 9, 0.5F);
    classifier.musicCheckByLowEnergyFrameRate(segments, 64, 9, param.lowEnergyThresholds,
                                              param.lowEnergyCentres);
    classifier.array2dDelete(reinterpret_cast<void**>(segments), 9);
    classifier.array2dDelete(classifier.array2dCreate(2, 3, 4), 2);
    std::unique_ptr<float[]> magnitudes(classifier.fft(signal.get(), 320, 63998));
    std::unique_ptr<float[]> ratios(classifier.subBandEnergyRate(magnitudes.get()));
    float* centres[4] = {param.subBandCentres[0], param.subBandCentres[1], param.subBandCentres[2],
                         param.subBandCentres[3]};
    classifier.musicCheckByFft(signal.get(), 320, 63998, centres);
    EXPECT_EQ(classifier.nearestCenter(param.subBandCentres[2], centres, 4, 3), centres[2]);
    EXPECT_EQ(classifier.distance(centres[1], centres[1], 3), 0.0F);
    EXPECT_TRUE(classifier.preRetRefer(true, 0));
    const complex zero;
    EXPECT_EQ(zero.real + zero.imag, 0.0F);
}

class SilentListener : public FilterListener {
public:
    void OnEvent(int, std::string) override {}
};

TEST(Surface, Filter) {
    const auto filter = std::make_unique<AudioFilter>();
    SilentListener listener;
    MediaProcessLog logger;
    EXPECT_TRUE(filter->SetListener(&listener));
    EXPECT_TRUE(filter->SetLogger(&logger));
    ProcessSwitchMap switches = {{AP_GAIN, true}};
    EXPECT_EQ(filter->Init(48000, 1, SAMPLE_FMT_S16, &switches), RESULT_OK);
    EXPECT_TRUE(filter->SetMethod(&switches));
    ProcessParam gain = {0.5F, 0};
    EXPECT_TRUE(filter->SetParameter(&gain, AP_GAIN));
    std::vector<char> in(960);
    std::vector<char> out(2240);
    AVParam param;
    int size = 960;
    EXPECT_EQ(filter->Process(in.data(), out.data(), size, {AV_SOURCE_MICROPHONE}, param, 0),
              RESULT_OK);
    EXPECT_EQ(
        filter->ProcessResample(in.data(), out.data(), size, {AV_SOURCE_MICROPHONE}, param, 0),
        RESULT_RESAMPLED);
    EXPECT_EQ(filter->SyncProcessDelay(in.data(), out.data(), size, {AV_SOURCE_MICROPHONE}),
              RESULT_OK);
    EXPECT_EQ(filter->GetSampleByteSize(SAMPLE_FMT_DBLP), 8);
    EXPECT_TRUE(filter->HaveMicSrc({AV_SOURCE_MICROPHONE}));
    EXPECT_FALSE(filter->CheckMultiMicSrc({AV_SOURCE_MICROPHONE}));
    EXPECT_TRUE(filter->CheckSameSrcType({AV_SOURCE_1, AV_SOURCE_1}));
    EXPECT_EQ(filter->SingleProcess(in.data(), out.data(), size, AV_SOURCE_MICROPHONE, param),
              RESULT_OK);
    filter->mSrcNum = 2;
    size = 480;
    EXPECT_EQ(filter->MulitProcess(in.data(), out.data(), size, {AV_SOURCE_1, AV_SOURCE_2}, param),
              RESULT_OK);
    EXPECT_TRUE(filter->Clear());
}

TEST(Surface, AnAllocationFailureIsCaughtByTheHost) {
    const auto filter = std::make_unique<AudioFilter>();
    EXPECT_THROW(filter->Init(2147483647, 2, SAMPLE_FMT_S16, nullptr), std::bad_alloc);
    EXPECT_TRUE(filter->Clear());
}

}  // namespace
