#include "threads/operations.h"

#include <atomic>
#include <thread>

#include "audio_filter/audio_filter.h"
#include "common/process_data_pool.h"
#include "log/media_process_log.h"
#include "log/pr_console_log_writer.h"
#include "log/pr_file_log_writer.h"
#include "log/pr_log.h"
#include "support/temp_dir.h"

Subject FilterSubject() {
    struct Object {
        AudioFilter filter;
        ProcessSwitchMap on = {
            {AP_DENOISE, true}, {AP_PHASE_CHECK, true}, {AP_GAIN, true}, {AP_MIXING, true}};
    };
    const auto object = std::make_shared<Object>();
    AudioFilter* filter = &object->filter;
    filter->Init(32000, 2, SAMPLE_FMT_S16, &object->on);
    using Entry =
        std::function<void(const char*, char*, int&, std::vector<AVSourceType>, AVParam&)>;
    // Each call of one source and of two, with buffers of its own.
    const auto calling = [](const Entry& entry) {
        return [entry] {
            std::vector<char> in(2560);
            std::vector<char> out(5120);
            AVParam param;
            param.audioSampleRate = 32000;
            param.audioChannels = 2;
            param.audioSampleFmt = SAMPLE_FMT_S16;
            int size = 1280;
            entry(in.data(), out.data(), size, {AV_SOURCE_MICROPHONE}, param);
            size = 2560;
            entry(in.data(), out.data(), size, {AV_SOURCE_MICROPHONE, AV_SOURCE_1}, param);
        };
    };
    Subject subject = {
        "audio_filter/audio_filter.h", "AudioFilter", object, &filter->mLock, {}, {}};
    subject.sideBySide = {
        {"Process", calling([filter](auto in, auto out, auto& size, auto sources, auto& param) {
             filter->Process(in, out, size, sources, param, 0);
         })},
        {"ProcessResample",
         calling([filter](auto in, auto out, auto& size, auto sources, auto& param) {
             filter->ProcessResample(in, out, size, sources, param, 0);
         })},
        {"SyncProcessDelay", calling([filter](auto in, auto out, auto& size, auto sources, auto&) {
             filter->SyncProcessDelay(in, out, size, sources);
         })},
        {"SetMethod",
         [filter] {
             ProcessSwitchMap some = {{AP_DENOISE, true}, {AP_MIXING, true}};
             filter->SetMethod(&some);
         }},
        {"SetParameter",
         [filter] {
             ProcessParam param = {0.5F, 2};
             filter->SetParameter(&param, AP_GAIN);
             filter->SetParameter(&param, AP_DENOISE);
         }},
        {"Clear", [filter] { filter->Clear(); }},
    };
    subject.alone = {
        {"Init", [object] { object->filter.Init(32000, 2, SAMPLE_FMT_S16, &object->on); }},
        {"SetListener", [filter] { filter->SetListener(nullptr); }},
        {"SetLogger", [filter] { filter->SetLogger(nullptr); }},
    };
    return subject;
}

Subject LogSubject() {
    struct Object {
        TempDir dir;
        PRLog log;
    };
    const auto object = std::make_shared<Object>();
    PRLog* log = &object->log;
    const auto add = [object] {
        PRFileLogParam file = {object->dir.File("log"), 1, 0};
        return object->log.AddLog(PROCESS_LOG_FILE, &file, PROCESS_LOG_DEBUG);
    };
    add();
    Subject subject = {"log/pr_log.h", "PRLog", object, &log->mLock, {}, {}};
    subject.sideBySide = {
        {"AddLog", [add] { add(); }},
        {"RemoveLog", [log, add] { log->RemoveLog(add()); }},
        {"SetLogLevel", [log] { log->SetLogLevel(0, PROCESS_LOG_INFO); }},
        {"RemoveAllLog", [log] { log->RemoveAllLog(); }},
        {"Info", [log] { log->Info("a", "%d", 1); }},
        {"Debug", [log] { log->Debug("b", "%s", "two"); }},
        {"Warn", [log] { log->Warn("c", "%d", 3); }},
        {"Error", [log] { log->Error("d", "%d", 4); }},
    };
    return subject;
}

Subject FileLogSubject() {
    struct Object {
        TempDir dir;
        MediaProcessLog log;
    };
    const auto object = std::make_shared<Object>();
    MediaProcessLog* log = &object->log;
    log->Init(PROCESS_LOG_INFO, object->dir.File("log"));
    Subject subject = {"log/media_process_log.h", "MediaProcessLog", object, &log->mLock, {}, {}};
    // Written first: what a thread may leave locked, that thread destroys.
    subject.sideBySide = {
        {"WriteLog", [log] { log->WriteLog(PROCESS_LOG_WARN, "%d frames late", 3); }},
        {"Uninit", [log] { log->Uninit(); }},
    };
    subject.alone = {
        {"Init", [object] { object->log.Init(PROCESS_LOG_INFO, object->dir.File("log")); }},
        {"IsInited", [log] { log->IsInited(); }},
        {"SetLogLevel", [log] { log->SetLogLevel(PROCESS_LOG_INFO); }},
    };
    subject.once = true;
    return subject;
}

Subject PoolSubject() {
    const auto pool = std::make_shared<ProcessDataPool>(256, false, 10, 0);
    Subject subject = {"common/process_data_pool.h", "ProcessDataPool", pool, &pool->mLock, {}, {}};
    ProcessDataPool* entries = pool.get();
    subject.sideBySide = {
        {"GetProcessData",
         [entries] {
             char payload[64] = {};
             if (ProcessData* entry = entries->GetProcessData(payload, 64, AVParam(), 1, nullptr)) {
                 entry->SelfRelease();
             }
             if (ProcessData* entry = entries->GetProcessData(payload, 32, 2, nullptr)) {
                 entry->SelfRelease();
             }
         }},
        {"GetFrontInputData", [entries] { entries->GetFrontInputData(); }},
        {"GetFreeDataSize", [entries] { entries->GetFreeDataSize(); }},
        {"GetMaxDataSize", [entries] { entries->GetMaxDataSize(); }},
        {"GetUsedDataSize", [entries] { entries->GetUsedDataSize(); }},
    };
    subject.alone = {{"FreeUnused", [entries] { entries->FreeUnused(); }}};
    return subject;
}

Subject BufferSubject() {
    struct Object {
        ProcessDataPool pool{2, false, 10, 0};
        ProcessData* entry = nullptr;
    };
    const auto object = std::make_shared<Object>();
    char payload[64] = {};
    object->entry = object->pool.GetProcessData(payload, 64, 1, nullptr);
    ProcessData* entry = object->entry;
    Subject subject = {"common/process_data.h", "ProcessData", object, nullptr, {}, {}};
    subject.sideBySide = {
        {"SelfCopy", [entry] { entry->SelfCopy()->SelfRelease(); }},
        {"SelfRelease", [entry] { entry->SelfCopy()->SelfRelease(); }},
        {"GetRefCount", [entry] { entry->GetRefCount(); }},
        {"GetLastReleaseTime", [entry] { entry->GetLastReleaseTime(); }},
    };
    subject.alone = {
        {"Reset", [entry] { entry->Reset(128); }},
        {"Free", [entry] { entry->Free(); }},
        {"SetFree", [entry] { entry->SetFree(nullptr, nullptr); }},
    };
    return subject;
}

Subject LogFunctionsSubject() {
    Subject subject = {"log/pr_log.h", "", nullptr, nullptr, {}, {}};
    subject.sideBySide = {
        {"GetPRFormatDate", [] { GetPRFormatDate(); }},
        {"GetPRFormatDate2", [] { GetPRFormatDate2(); }},
        {"int2str_pr", [] { int2str_pr(-1); }},
    };
    subject.alone = {
        {"PR_LOG_ENABLE", [] { PR_LOG_ENABLE(false); }},
        {"GeneratePRLogId", [] { GeneratePRLogId(); }},
    };
    return subject;
}

Subject LogWriterSubject() {
    struct Object {
        PRConsoleLogWriter writer{PROCESS_LOG_ERROR};
    };
    const auto object = std::make_shared<Object>();
    PRLogWriter* base = &object->writer;
    Subject subject = {"log/pr_log_writer.h", "PRLogWriter", object, nullptr, {}, {}};
    subject.sideBySide = {{"GetId", [base] { base->GetId(); }}};
    subject.alone = {
        {"Init", [base] { base->Init(nullptr); }},
        {"WriteLog", [base] { base->WriteLog(PROCESS_LOG_DEBUG, "a", "b", nullptr); }},
        {"SetLevel", [base] { base->SetLevel(PROCESS_LOG_ERROR); }},
        {"Destroy", [base] { base->Destroy(); }},
    };
    return subject;
}

Subject LockSubject() {
    struct Object {
        Object() {
            process_lock_init(&lock);
            process_cond_init(&cond);
        }
        ~Object() {
            process_cond_destroy(&cond);
            process_lock_destroy(&lock);
        }
        ProcessLock lock;
        ProcessCond cond;
        int guarded = 0;
    };
    const auto object = std::make_shared<Object>();
    Object* pair = object.get();
    const auto count = [pair] {
        process_lock(&pair->lock);
        ++pair->guarded;
        process_unlock(&pair->lock);
    };
    Subject subject = {"common/process_lock.h", "", object, nullptr, {}, {}};
    subject.sideBySide = {
        {"process_lock", count},
        {"process_unlock", count},
        {"process_cond_signal", [pair] { process_cond_signal(&pair->cond); }},
        {"process_cond_wait",
         [pair] {
             std::atomic<bool> woken = false;
             std::thread waker([&] {
                 while (!woken) {
                     process_cond_signal(&pair->cond);
                     std::this_thread::yield();
                 }
             });
             process_lock(&pair->lock);
             process_cond_wait(&pair->cond, &pair->lock);
             ++pair->guarded;
             process_unlock(&pair->lock);
             woken = true;
             waker.join();
         }},
        {"process_cond_wait_time",
         [pair] {
             process_lock(&pair->lock);
             process_cond_wait_time(&pair->cond, &pair->lock, 0);
             ++pair->guarded;
             process_unlock(&pair->lock);
         }},
    };
    subject.alone = {
        {"process_lock_init", [] { Object(); }},
        {"process_lock_destroy", [] { Object(); }},
        {"process_cond_init", [] { Object(); }},
        {"process_cond_destroy", [] { Object(); }},
    };
    return subject;
}
