#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "common/result_code.h"
#include "fuzz/support/script.h"
#include "log/fake_wall_clock.h"
#include "log/log_output.h"
#include "log/media_process_log.h"
#include "log/pr_console_log_writer.h"
#include "log/pr_file_log_writer.h"
#include "log/pr_log.h"
#include "support/temp_dir.h"

using namespace audio_filter::internal;

/// PRLog with any writers, and MediaProcessLog. The files must hold the written lines.
class LogScript {
public:
    explicit LogScript(Script& script) : mScript(script) { TheWallClock() = {}; }

    ~LogScript() {
        mLog.RemoveAllLog();
        for (const auto& [path, text] : mFiles) {
            EXPECT_EQ(ReadFile(path), text);
        }
    }

    void Step() {
        switch (mScript.Within(0, 11)) {
            case 0:
            case 1: AddFile(); break;
            case 2: AddConsole(); break;
            case 3: Remove(); break;
            case 4: SetLevel(); break;
            case 5: MoveClock(); break;
            case 6: WriteWithoutArguments(); break;
            case 7:
            case 8: WriteToOneFile(); break;
            default: Write(); break;
        }
    }

private:
    /// The expected state of a writer. One without a file prints to the console or nowhere.
    struct PlainWriter {
        int id;
        int level;
        std::string prefix;
        std::string file;
        int period = 0;
        std::int64_t start = 0;
    };

    int Level() { return mScript.OneIn(6) ? mScript.AnyInt() : mScript.Within(1, 4); }

    std::string Text() {
        std::string text = mScript.ConsumeRandomLengthString(300);
        std::replace(text.begin(), text.end(), '\0', ' ');
        return text;
    }

    void AddFile() {
        PRFileLogParam param;
        const bool unusable = mScript.OneIn(6);
        param.namePrefix =
            mDir.File((unusable ? "none/" : "log") + std::to_string(mWriters.size()) + "_" +
                      std::to_string(++mPrefixes));
        param.nPartionSize = mScript.ConsumeBool() ? 0 : mScript.AnyInt();
        param.partitionPeriod = mScript.ConsumeBool() ? 0 : mScript.AnyInt();
        if (mScript.OneIn(8)) {
            param.namePrefix.clear();
        }
        const bool null = mScript.OneIn(8);
        const int level = Level();
        PlainWriter writer = {mLog.AddLog(PROCESS_LOG_FILE, null ? nullptr : &param, level), level,
                              "", ""};
        const bool both = param.nPartionSize >= 1 && param.partitionPeriod >= 1;
        if (!null && !param.namePrefix.empty() && !both && !unusable) {
            writer.prefix = param.namePrefix;
            writer.period = param.partitionPeriod;
            writer.start = TheWallClock().seconds;
            Open(writer, param.nPartionSize >= 1 ? "0" : GetPRFormatDate2());
        }
        mWriters.push_back(writer);
    }

    void Open(PlainWriter& writer, const std::string& suffix) {
        writer.file = writer.prefix + "_" + suffix;
        mFiles[writer.file].clear();
    }

    void AddConsole() {
        PRConsoleLogParam param = {mScript.OneIn(4) ? mScript.AnyInt() : mScript.Within(0, 1)};
        const auto type = static_cast<ProcessLogType>(mScript.OneIn(4) ? mScript.AnyInt() : 0);
        const int level = Level();
        if (type == PROCESS_LOG_FILE) {
            return;  // takes another parameter block
        }
        const int id = mLog.AddLog(type, mScript.OneIn(8) ? nullptr : &param, level);
        ASSERT_EQ(id == -1, type != PROCESS_LOG_CONSOLE);
        if (id != -1) {
            mWriters.push_back({id, level, "", ""});
        }
    }

    void Remove() {
        if (mScript.OneIn(8)) {
            ASSERT_EQ(mLog.RemoveAllLog(), RESULT_OK);
            mWriters.clear();
        } else if (mWriters.empty() || mScript.OneIn(6)) {
            ASSERT_EQ(mLog.RemoveLog(mScript.Within(-70'000, -1)), RESULT_FAILURE);
        } else {
            const std::size_t which = mScript.Count(mWriters.size() - 1);
            ASSERT_EQ(mLog.RemoveLog(mWriters[which].id), RESULT_OK);
            mWriters.erase(mWriters.begin() + static_cast<std::ptrdiff_t>(which));
        }
    }

    void SetLevel() {
        const int level = Level();
        ASSERT_EQ(mLog.SetLogLevel(mScript.Within(-70'000, -1), level), RESULT_FAILURE);
        if (!mWriters.empty()) {
            PlainWriter& writer = mWriters[mScript.Count(mWriters.size() - 1)];
            ASSERT_EQ(mLog.SetLogLevel(writer.id, level), RESULT_OK);
            writer.level = level;
        }
    }

    void MoveClock() {
        FakeWallClock& clock = TheWallClock();
        clock.seconds += mScript.OneIn(4) ? mScript.AnyInt() : mScript.Within(-1, 5);
        int* const fields[] = {&clock.local.year,       &clock.local.month,  &clock.local.day,
                               &clock.local.hour,       &clock.local.minute, &clock.local.second,
                               &clock.local.millisecond};
        *mScript.PickValueInArray(fields) = mScript.AnyInt();
    }

    void Write() {
        const std::string prefix = Text();
        const std::string text = Text();
        const int number = mScript.AnyInt();
        const double real = static_cast<double>(mScript.AnyFloat());
        const int level = mScript.Within(1, 4);
        const char* format = mScript.PickValueInArray(
            {"%s|%d|%.3f", "%.5s %x %e", "%300s%%%-12d%g", "%s", "100%%", ""});
        std::vector<char> message(3000);
        const int length = std::snprintf(message.data(), message.size(), Format(format),
                                         text.c_str(), number, real);
        Log(level, prefix, Format(format), text.c_str(), number, real);
        const std::string line = prefix + ":" + std::string(message.data(), AsSize(length)) + "\n";
        for (PlainWriter& writer : mWriters) {
            Expect(writer, level, line);
        }
    }

    /// Hides the literal from format warnings, since the format is picked at run time.
    static const char* Format(const char* format) { return format; }
    static std::size_t AsSize(int length) { return static_cast<std::size_t>(length); }

    template <typename... Args>
    void Log(int level, const std::string& prefix, const char* format, Args... args) {
        switch (level) {
            case 1: return mLog.Debug(prefix, format, args...);
            case 2: return mLog.Info(prefix, format, args...);
            case 3: return mLog.Warn(prefix, format, args...);
            default: return mLog.Error(prefix, format, args...);
        }
    }

    void Expect(PlainWriter& writer, int level, const std::string& line) {
        if (writer.prefix.empty() || level < writer.level) {
            return;
        }
        if (writer.period >= 1 && TheWallClock().seconds - writer.start > writer.period) {
            Open(writer, GetPRFormatDate2());
        }
        mFiles[writer.file] += line;
    }

    /// Without arguments any text is a valid format.
    void WriteWithoutArguments() {
        const std::string format = Text();
        std::string expected;
        for (std::size_t i = 0; i < format.size(); ++i) {
            expected += format[i];
            i += format[i] == '%' && i + 1 < format.size() && format[i + 1] == '%' ? 1U : 0U;
        }
        PRFileLogWriter writer(1);
        PRFileLogParam param = {mDir.File("plain" + std::to_string(++mPrefixes)), 1, 0};
        ASSERT_EQ(writer.WriteLog(4, "p", "not open", nullptr), RESULT_FAILURE);
        ASSERT_EQ(writer.Init(&param), RESULT_OK);
        const bool noPrefix = mScript.ConsumeBool();
        const bool noFormat = mScript.OneIn(8);
        ASSERT_EQ(writer.WriteLog(2, noPrefix ? nullptr : "p", noFormat ? nullptr : format.c_str(),
                                  nullptr),
                  RESULT_OK);
        mFiles[param.namePrefix + "_0"] =
            std::string(noPrefix ? ":" : "p:") + (noFormat ? "" : expected) + "\n";
    }

    void WriteToOneFile() {
        MediaProcessLog log;
        const std::string path = mDir.File("one" + std::to_string(++mPrefixes));
        bool open = false;
        int least = PROCESS_LOG_ERROR;
        for (int step = mScript.Within(1, 8); step > 0; --step) {
            const auto level = static_cast<ProcessLogLevel>(Level());
            const bool known = level >= 1 && level <= 4;
            const int what = mScript.Within(0, 5);
            if (what == 0) {
                const bool noPath = mScript.OneIn(6);
                const int code = log.Init(level, noPath ? "" : path);
                ASSERT_EQ(code, known && !noPath ? RESULT_OK : RESULT_INVALID);
                if (code == RESULT_OK) {
                    mFiles[path].clear();
                    open = true;
                    least = level;
                }
            } else if (what == 1) {
                log.SetLogLevel(level);
                least = known ? level : least;
            } else if (what == 2) {
                ASSERT_TRUE(log.Uninit());
                open = false;
                least = PROCESS_LOG_ERROR;
            } else {
                const std::string text = Text();
                const bool empty = mScript.OneIn(8);
                const int code = log.WriteLog(level, empty ? "" : "%s", text.c_str());
                const bool below = level < least;
                ASSERT_EQ(code, below   ? RESULT_OK
                                : !open ? RESULT_NOT_INITIALISED
                                : empty ? RESULT_BAD_ARGUMENT
                                        : RESULT_OK);
                if (!below && open && !empty) {
                    mFiles[path] += text + "\n";
                }
            }
            ASSERT_EQ(log.IsInited(), open);
        }
    }

    Script& mScript;
    TempDir mDir;
    PRLog mLog;
    std::vector<PlainWriter> mWriters;
    std::map<std::string, std::string> mFiles;  ///< expected contents
    int mPrefixes = 0;
};
