#include "host/spool.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <cstdlib>
#include <vector>

#include "host/failure.h"
#include "support/temp_dir.h"

namespace {

TEST(Spool, ReturnsWhatWasWrittenFromAFileWithoutAName) {
    const TempDir dir;
    for (const std::string& output :
         {dir.File("o.wav"), dir.File("none/o.wav"), std::string("-")}) {
        Spool spool(output);
        const std::vector<int> numbers = {1, 2, 3};
        for (int i = 0; i < 5000; ++i) {
            spool.Write(numbers.data(), sizeof(int) * numbers.size());
        }
        EXPECT_EQ(dir.Names().size(), 0U);
        spool.Rewind();
        std::vector<int> read(16000);
        EXPECT_EQ(spool.Read(read.data(), sizeof(int) * read.size()), sizeof(int) * 15000);
        EXPECT_EQ(read[14999], 3);
        EXPECT_EQ(spool.Read(read.data(), 1), 0U);
    }
}

TEST(Spool, AFullDiskIsAFailureWithItsCause) {
    const TempDir dir;
    const auto fill = [&dir] {
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit = {1000, 1000};
        setrlimit(RLIMIT_FSIZE, &limit);
        try {
            Spool spool(dir.File("o.wav"));
            const std::string bytes(100000, 'x');
            spool.Write(bytes.data(), bytes.size());
        } catch (const Failure& failure) {
            const std::string text = failure.what();
            std::exit(text.ends_with("o.wav: cannot be stored in a temporary file: File too large")
                          ? 0
                          : 1);
        }
        std::exit(2);
    };
    EXPECT_EXIT(fill(), testing::ExitedWithCode(0), "");
}

}  // namespace
