#include "common/source_list.h"

#include <gtest/gtest.h>

#include <initializer_list>

using namespace audio_filter::internal;

namespace {

std::vector<AVSourceType> Sources(std::initializer_list<int> values) {
    std::vector<AVSourceType> sources;
    for (const int value : values) {
        sources.push_back(static_cast<AVSourceType>(value));
    }
    return sources;
}

TEST(SourceList, Sources0_2_0HaveSeveralMicrophones) {
    EXPECT_TRUE(HasMicrophone(Sources({0, 2, 0})));
    EXPECT_TRUE(HasSeveralMicrophones(Sources({0, 2, 0})));
}

TEST(SourceList, Sources1_2_3HaveNoMicrophone) {
    EXPECT_FALSE(HasMicrophone(Sources({1, 2, 3})));
    EXPECT_FALSE(HasSeveralMicrophones(Sources({1, 2, 3})));
}

TEST(SourceList, OneMicrophoneIsNotSeveralAndAnEmptyListHasNone) {
    EXPECT_TRUE(HasMicrophone(Sources({3, 0})));
    EXPECT_FALSE(HasSeveralMicrophones(Sources({3, 0})));
    EXPECT_FALSE(HasMicrophone({}));
    EXPECT_FALSE(HasSeveralMicrophones({}));
    EXPECT_FALSE(HasSeveralMicrophones(Sources({-1, 7, 7})));
}

}  // namespace
