// Work in a child process that falls, hangs or asks for too much: each is told in words of its own.
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <stdexcept>
#include <vector>

#include "support/temp_dir.h"
#include "tools/import/limited_child.h"

namespace pelt::tool {
namespace {

constexpr ChildLimits USUAL{512, 20};

TEST(LimitedChild, GivesWhatTheWorkReturns) {
    const std::string large(3000000, 'x');
    const ChildResult result = run_in_child(USUAL, [&] { return large; });
    EXPECT_EQ(result.error, "");
    EXPECT_EQ(result.output, large);
}

TEST(LimitedChild, AFallIsToldWithItsSignal) {
    for (const int number : {SIGSEGV, SIGABRT, SIGFPE}) {
        const ChildResult result = run_in_child(USUAL, [&]() -> std::string {
            std::signal(number, SIG_DFL);  // a sanitizer would catch it
            std::raise(number);
            return "not reached";
        });
        EXPECT_NE(result.error.find("it is broken: its reader fell over it"), std::string::npos) << result.error;
        EXPECT_EQ(result.output, "");
    }
}

TEST(LimitedChild, AnExceptionIsNoFall) {
    const ChildResult result = run_in_child(USUAL, []() -> std::string { throw std::runtime_error("no"); });
    EXPECT_EQ(result.error, "it is broken: its reader gave up");
}

TEST(LimitedChild, TakesNoMoreMemoryThanItMay) {
#if !defined(__SANITIZE_ADDRESS__)
    const ChildResult result = run_in_child({256, 20}, [] {
        const std::vector<char> block(size_t{1} << 34, 'x');
        return std::string(block.begin(), block.begin() + 1);
    });
    EXPECT_EQ(result.error, "it needs more memory than 256 MB (--memory)");
#endif
    const ChildResult thrown = run_in_child(USUAL, []() -> std::string { throw std::bad_alloc(); });
    EXPECT_EQ(thrown.error, "it needs more memory than 512 MB (--memory)");
}

TEST(LimitedChild, TakesNoMoreTimeThanItMay) {
    const auto start = std::chrono::steady_clock::now();
    for (const bool works : {true, false}) {
        const ChildResult result = run_in_child({512, 1}, [&]() -> std::string {
            volatile int turns = 0;
            while (true) {
                if (works) {
                    turns = turns + 1;
                } else {
                    pause();
                }
            }
        });
        EXPECT_EQ(result.error, "it takes longer than 1 seconds (--seconds)");
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
}

TEST(LimitedChild, WritesNoFileAndSaysNothing) {
    const test::TempDir dir;
    const std::string path = dir.file("written");
    testing::internal::CaptureStderr();
    run_in_child(USUAL, [&] {
        std::signal(SIGXFSZ, SIG_IGN);
        std::fputs("a word of the library's\n", stderr);
        if (std::FILE* file = std::fopen(path.c_str(), "w")) {
            std::fputs("bytes", file);
            std::fclose(file);
        }
        return std::string();
    });
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(dir.read("written"), "");
}

}  // namespace
}  // namespace pelt::tool
