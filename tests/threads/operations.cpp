#include "threads/operations.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <set>
#include <sstream>
#include <thread>

#include "audio_filter/audio_filter.h"
#include "common/process_data_pool.h"
#include "common/result_code.h"
#include "log/media_process_log.h"
#include "log/pr_console_log_writer.h"
#include "log/pr_file_log_writer.h"
#include "log/pr_log.h"
#include "support/temp_dir.h"

namespace {

/// Counts the events that do not switch a kind.
struct Switches : FilterListener {
    void OnEvent(int code, std::string) override {
        const auto kind = static_cast<ProcessType>((code - 150001) / 2);
        const bool isOn = (code - 150001) % 2 == 0;
        repeated += on[kind] == isOn ? 1 : 0;
        on[kind] = isOn;
    }

    ProcessSwitchMap on;
    int repeated = 0;
};

/// A count that many threads raise. Relaxed, because it must not order the operations it counts.
class Tally {
public:
    void Add(int count) { mCount.fetch_add(count, std::memory_order_relaxed); }
    operator int() const { return mCount.load(std::memory_order_relaxed); }

private:
    std::atomic<int> mCount = 0;
};

/// The lines of a file, each of which must be one of these.
int WholeLines(const std::string& path, const std::set<std::string>& known) {
    std::istringstream text(ReadFile(path));
    int lines = 0;
    for (std::string line; std::getline(text, line); ++lines) {
        EXPECT_TRUE(known.count(line) == 1) << line;
    }
    return lines;
}

}  // namespace

Subject FilterSubject() {
    struct Object {
        Switches switches;
        AudioFilter filter;
        ProcessSwitchMap on = {
            {AP_DENOISE, true}, {AP_PHASE_CHECK, true}, {AP_GAIN, true}, {AP_MIXING, true}};
    };
    const auto object = std::make_shared<Object>();
    AudioFilter* filter = &object->filter;
    filter->SetListener(&object->switches);
    filter->Init(32000, 2, SAMPLE_FMT_S16, &object->on);
    using Entry = std::function<int(const char*, char*, int&, std::vector<AVSourceType>, AVParam&)>;
    // A block of one source, then of two, in separate buffers.
    const auto calling = [](int done, const Entry& entry) {
        return [entry, done] {
            std::vector<char> in(2560);
            std::vector<char> out(5120);
            AVParam param;
            param.audioSampleRate = 32000;
            param.audioChannels = 2;
            param.audioSampleFmt = SAMPLE_FMT_S16;
            for (const std::vector<AVSourceType>& sources :
                 {std::vector{AV_SOURCE_MICROPHONE},
                  std::vector{AV_SOURCE_MICROPHONE, AV_SOURCE_1}}) {
                const int given = 1280 * static_cast<int>(sources.size());
                int size = given;
                const int code = entry(in.data(), out.data(), size, sources, param);
                EXPECT_TRUE((code == done && size % 1280 == 0 && size <= given) ||
                            (code == RESULT_NOT_INITIALISED && size == given))
                    << "code " << code << ", " << size << " bytes of " << given;
            }
        };
    };
    Subject subject = {
        "audio_filter/audio_filter.h", "AudioFilter", object, &filter->mLock, {}, {}, {}};
    subject.sideBySide = {
        {"Process", calling(RESULT_OK,
                            [filter](auto in, auto out, auto& size, auto sources, auto& param) {
                                return filter->Process(in, out, size, sources, param, 0);
                            })},
        {"ProcessResample",
         calling(RESULT_RESAMPLED,
                 [filter](auto in, auto out, auto& size, auto sources, auto& param) {
                     return filter->ProcessResample(in, out, size, sources, param, 0);
                 })},
        {"SyncProcessDelay", calling(RESULT_OK,
                                     [filter](auto in, auto out, auto& size, auto sources, auto&) {
                                         return filter->SyncProcessDelay(in, out, size, sources);
                                     })},
        {"SetMethod",
         [filter] {
             for (int i = 0; i < 200; ++i) {
                 ProcessSwitchMap some = {
                     {AP_DENOISE, true}, {AP_PHASE_CHECK, i % 2 != 0}, {AP_MIXING, true}};
                 EXPECT_TRUE(filter->SetMethod(&some));
             }
         }},
        {"SetParameter",
         [filter] {
             ProcessParam param = {0.5F, 2};
             const bool gain = filter->SetParameter(&param, AP_GAIN);
             const bool level = filter->SetParameter(&param, AP_DENOISE);
             EXPECT_TRUE(gain || !level) << "nothing undoes Clear";
         }},
        {"Clear", [filter] { EXPECT_TRUE(filter->Clear()); }},
    };
    subject.alone = {
        {"Init", [object] { object->filter.Init(32000, 2, SAMPLE_FMT_S16, &object->on); }},
        {"SetListener", [filter] { filter->SetListener(nullptr); }},
        {"SetLogger", [filter] { filter->SetLogger(nullptr); }},
    };
    subject.check = [object] {
        EXPECT_EQ(object->switches.repeated, 0) << "an event without a change";
        for (const auto& [kind, on] : object->switches.on) {
            EXPECT_EQ(object->filter.mSwitchState[kind], on && object->filter.mInited) << kind;
        }
    };
    return subject;
}

Subject LogSubject() {
    struct Object {
        TempDir dir;
        PRLog log;
        Tally added;
        Tally removed;
        Tally removedAll;
        Tally written;
        Tally lost;  // operations that truncate the file, or leave it without a writer
        int first = -1;
    };
    const auto object = std::make_shared<Object>();
    PRLog* log = &object->log;
    const auto add = [object] {
        PRFileLogParam file = {object->dir.File("log"), 1, 0};
        const int id = object->log.AddLog(PROCESS_LOG_FILE, &file, PROCESS_LOG_DEBUG);
        EXPECT_GE(id, 0);
        object->added.Add(1);
        return id;
    };
    object->first = add();
    Subject subject = {"log/pr_log.h", "PRLog", object, &log->mLock, {}, {}, {}};
    subject.sideBySide = {
        {"AddLog",
         [object, add] {
             object->lost.Add(1);
             add();
         }},
        {"RemoveLog",
         [object, add] {
             object->lost.Add(1);
             object->removed.Add(object->log.RemoveLog(add()) == 0 ? 1 : 0);
         }},
        {"SetLogLevel",
         [object] {
             const int code = object->log.SetLogLevel(object->first, PROCESS_LOG_DEBUG);
             EXPECT_TRUE(code == RESULT_OK || object->lost > 0) << code;
         }},
        {"RemoveAllLog",
         [object] {
             object->lost.Add(1);
             EXPECT_EQ(object->log.RemoveAllLog(), RESULT_OK);
             object->removedAll.Add(1);
         }},
        {"Info",
         [object] {
             object->log.Info("a", "%d", 1);
             object->written.Add(1);
         }},
        {"Debug",
         [object] {
             object->log.Debug("b", "%s", "two");
             object->written.Add(1);
         }},
        {"Warn",
         [object] {
             object->log.Warn("c", "%d", 3);
             object->written.Add(1);
         }},
        {"Error",
         [object] {
             object->log.Error("d", "%d", 4);
             object->written.Add(1);
         }},
    };
    subject.check = [object] {
        std::set<int> ids;
        for (PRLogWriter* writer : object->log.mWriters) {
            EXPECT_TRUE(ids.insert(writer->GetId()).second) << "two writers of one id";
        }
        if (object->lost == 0) {
            EXPECT_EQ(WholeLines(object->dir.File("log_0"), {"a:1", "b:two", "c:3", "d:4"}),
                      object->written);
        }
        if (object->removedAll == 0) {
            EXPECT_EQ(static_cast<int>(ids.size()), object->added - object->removed);
        }
    };
    subject.calls = 10;
    return subject;
}

Subject FileLogSubject() {
    struct Object {
        TempDir dir;
        MediaProcessLog log;
        Tally written;
        Tally closed;
    };
    const auto object = std::make_shared<Object>();
    MediaProcessLog* log = &object->log;
    log->Init(PROCESS_LOG_INFO, object->dir.File("log"));
    Subject subject = {
        "log/media_process_log.h", "MediaProcessLog", object, &log->mLock, {}, {}, {}};
    // WriteLog first: where it leaves the lock held, the thread that called it destroys the logger.
    subject.sideBySide = {
        {"WriteLog",
         [object] {
             EXPECT_EQ(object->log.WriteLog(PROCESS_LOG_WARN, "%d frames late", 3), RESULT_OK);
             object->written.Add(1);
         }},
        {"Uninit",
         [object] {
             object->closed.Add(1);
             EXPECT_TRUE(object->log.Uninit());
         }},
    };
    subject.alone = {
        {"Init", [object] { object->log.Init(PROCESS_LOG_INFO, object->dir.File("log")); }},
        {"IsInited", [log] { log->IsInited(); }},
        {"SetLogLevel", [log] { log->SetLogLevel(PROCESS_LOG_INFO); }},
    };
    subject.check = [object] {
        const int lines = WholeLines(object->dir.File("log"), {"3 frames late"});
        EXPECT_TRUE(object->closed > 0 ? lines <= object->written : lines == object->written)
            << lines << " lines of " << object->written;
        EXPECT_EQ(object->log.IsInited(), object->closed == 0);
    };
    subject.calls = 1;
    return subject;
}

Subject PoolSubject() {
    struct Object {
        ProcessDataPool pool{256, false, 10, 0};
    };
    const auto object = std::make_shared<Object>();
    ProcessDataPool* pool = &object->pool;
    Subject subject = {
        "common/process_data_pool.h", "ProcessDataPool", object, &pool->mLock, {}, {}, {}};
    // Null once lost entries have emptied the pool.
    const auto use = [](ProcessData* entry, const char* payload, int size) {
        if (entry != nullptr) {
            EXPECT_EQ(entry->GetRefCount(), 1);
            EXPECT_EQ(entry->size, size);
            EXPECT_EQ(std::memcmp(entry->data, payload, static_cast<std::size_t>(size)), 0);
            entry->SelfRelease();
        }
    };
    const auto isCount = [](int count) { EXPECT_TRUE(count >= 0 && count <= 256) << count; };
    subject.sideBySide = {
        {"GetProcessData",
         [pool, use] {
             char payload[64];
             std::memset(payload, 1, sizeof(payload));
             use(pool->GetProcessData(payload, 64, AVParam(), 1, nullptr), payload, 64);
             std::memset(payload, 2, sizeof(payload));
             use(pool->GetProcessData(payload, 32, 2, nullptr), payload, 32);
         }},
        {"GetFrontInputData", [pool] { pool->GetFrontInputData(); }},
        {"GetFreeDataSize", [pool, isCount] { isCount(pool->GetFreeDataSize()); }},
        {"GetMaxDataSize", [pool] { EXPECT_EQ(pool->GetMaxDataSize(), 256); }},
        {"GetUsedDataSize", [pool, isCount] { isCount(pool->GetUsedDataSize()); }},
    };
    subject.alone = {{"FreeUnused", [pool] { pool->FreeUnused(); }}};
    subject.check = [pool] {
        std::set<const ProcessData*> listed;
        for (const ProcessData* entry = pool->mFree; entry != nullptr; entry = entry->mNext) {
            ASSERT_TRUE(listed.insert(entry).second) << "the free list is a loop";
        }
        EXPECT_EQ(static_cast<int>(listed.size()), pool->GetFreeDataSize());
        EXPECT_EQ(pool->GetFrontInputData(), nullptr);
        EXPECT_EQ(pool->GetMaxDataSize(), 256);
    };
    subject.calls = 200;
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
    Subject subject = {"common/process_data.h", "ProcessData", object, nullptr, {}, {}, {}};
    subject.sideBySide = {
        {"SelfCopy", [entry] { entry->SelfCopy()->SelfRelease(); }},
        {"SelfRelease", [entry] { entry->SelfCopy()->SelfRelease(); }},
        {"GetRefCount", [entry] { EXPECT_GE(entry->GetRefCount(), 1); }},
        {"GetLastReleaseTime", [entry] { EXPECT_EQ(entry->GetLastReleaseTime(), 0U); }},
    };
    subject.alone = {
        {"Reset", [entry] { entry->Reset(128); }},
        {"Free", [entry] { entry->Free(); }},
        {"SetFree", [entry] { entry->SetFree(nullptr, nullptr); }},
    };
    subject.check = [entry] { EXPECT_EQ(entry->GetRefCount(), 1) << "each copy is released"; };
    subject.calls = 20000;
    return subject;
}

Subject LogFunctionsSubject() {
    Subject subject = {"log/pr_log.h", "", nullptr, nullptr, {}, {}, {}};
    subject.sideBySide = {
        {"GetPRFormatDate", [] { EXPECT_EQ(GetPRFormatDate().size(), 23U); }},
        {"GetPRFormatDate2", [] { EXPECT_EQ(GetPRFormatDate2().size(), 23U); }},
        {"int2str_pr", [] { EXPECT_EQ(int2str_pr(-1), "-1"); }},
    };
    subject.check = [] {};  // there is no state to check
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
    const int id = base->GetId();
    Subject subject = {"log/pr_log_writer.h", "PRLogWriter", object, nullptr, {}, {}, {}};
    subject.sideBySide = {{"GetId", [base, id] { EXPECT_EQ(base->GetId(), id); }}};
    subject.check = [base, id] { EXPECT_EQ(base->GetId(), id); };
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
        Tally calls;
    };
    const auto object = std::make_shared<Object>();
    Object* pair = object.get();
    const auto count = [pair] {
        for (int i = 0; i < 200; ++i) {
            process_lock(&pair->lock);
            ++pair->guarded;
            process_unlock(&pair->lock);
        }
        pair->calls.Add(200);
    };
    Subject subject = {"common/process_lock.h", "", object, nullptr, {}, {}, {}};
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
             pair->calls.Add(1);
             woken = true;
             waker.join();
         }},
        {"process_cond_wait_time",
         [pair] {
             process_lock(&pair->lock);
             process_cond_wait_time(&pair->cond, &pair->lock, 0);
             ++pair->guarded;
             process_unlock(&pair->lock);
             pair->calls.Add(1);
         }},
    };
    subject.check = [pair] { EXPECT_EQ(pair->guarded, pair->calls); };
    subject.alone = {
        {"process_lock_init", [] { Object(); }},
        {"process_lock_destroy", [] { Object(); }},
        {"process_cond_init", [] { Object(); }},
        {"process_cond_destroy", [] { Object(); }},
    };
    return subject;
}
