#include "common/av_param.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

using Texts = std::vector<std::string>;

std::string Printed(const std::string& text) {
    return "'" + text + "'";
}

std::string Printed(const std::vector<LANGUAGE_TYPE>& languages) {
    std::string text = "[";
    for (const LANGUAGE_TYPE language : languages) {
        text += std::to_string(language) + " ";
    }
    return text + "]";
}

template <typename Number>
std::string Printed(Number number) {
    return std::to_string(number);
}

/// Prints every member.
struct Printer {
    template <typename Member>
    void operator()(Member& member) {
        texts.push_back(Printed(member));
    }
    Texts texts;
};

/// Gives every member a distinct value.
struct Filler {
    void operator()(std::string& text) { text = "a text long enough for the heap, " + Number(); }
    void operator()(std::vector<LANGUAGE_TYPE>& languages) {
        languages = {static_cast<LANGUAGE_TYPE>(++number), static_cast<LANGUAGE_TYPE>(++number)};
    }
    void operator()(unsigned char& flag) { flag = static_cast<unsigned char>(++number % 2); }
    template <typename Integer>
    void operator()(Integer& integer) {
        integer = static_cast<Integer>(++number);
    }
    std::string Number() { return std::to_string(++number); }

    int number;
};

/// Visits the members of a record by their position, not by name.
template <typename Visitor>
class Walk {
public:
    Walk(void* record, Visitor& visitor) : mNext(static_cast<char*>(record)), mVisitor(visitor) {}

    template <typename Member>
    Walk& Take(int count = 1) {
        for (int i = 0; i < count; ++i) {
            Align(alignof(Member));
            mVisitor(*reinterpret_cast<Member*>(mNext));
            mNext += sizeof(Member);
        }
        return *this;
    }

    Walk& Into(void (*members)(Walk&), std::size_t alignment) {
        Align(alignment);
        members(*this);
        Align(alignment);
        return *this;
    }

    char* Next() const { return mNext; }

private:
    void Align(std::size_t alignment) {
        while (reinterpret_cast<std::uintptr_t>(mNext) % alignment != 0) {
            ++mNext;
        }
    }

    char* mNext;
    Visitor& mVisitor;
};

template <typename Visitor>
void OfVBGParams(Walk<Visitor>& walk) {
    walk.template Take<std::int32_t>(2)
        .template Take<std::string>(2)
        .template Take<unsigned char>(3)
        .template Take<std::int32_t>(6)
        .template Take<std::int16_t>(2)
        .template Take<std::int32_t>(2)
        .template Take<std::string>()
        .template Take<std::int32_t>(4)
        .template Take<std::string>(8)
        .template Take<std::int32_t>();
}

template <typename Visitor>
void OfAIPar(Walk<Visitor>& walk) {
    walk.template Take<std::int32_t>(5)
        .template Take<std::vector<LANGUAGE_TYPE>>(2)
        .template Take<std::int64_t>()
        .template Take<std::string>()
        .template Take<std::int64_t>()
        .template Take<std::string>()
        .template Take<std::int64_t>()
        .template Take<std::string>(5);
}

template <typename Visitor>
void OfBeautyInitParams(Walk<Visitor>& walk) {
    walk.template Take<std::string>(3);
}

template <typename Visitor>
void OfAVParam(Walk<Visitor>& walk) {
    walk.template Take<std::int32_t>(2)
        .template Take<std::string>()
        .template Take<std::int32_t>(4)
        .Into(OfVBGParams, alignof(VBGParams))
        .template Take<std::int32_t>(2)
        .template Take<std::string>(2)
        .template Take<std::int32_t>(7)
        .Into(OfAIPar, alignof(AIPar))
        .template Take<std::int64_t>(6);
}

/// Visits all members of a record in order. @return the bytes that they take
template <typename Record, typename Visitor>
std::size_t Visit(Record& record, Visitor& visitor, void (*members)(Walk<Visitor>&)) {
    char* begin = reinterpret_cast<char*>(&record);
    Walk<Visitor> walk(begin, visitor);
    walk.Into(members, alignof(Record));
    return static_cast<std::size_t>(walk.Next() - begin);
}

template <typename Record>
Texts AllOf(Record& record, void (*members)(Walk<Printer>&)) {
    Printer printer;
    EXPECT_EQ(Visit(record, printer, members), sizeof(Record)) << "members missing from the list";
    return printer.texts;
}

Texts operator+(Texts a, const Texts& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

const Texts kVBGParams = {"-1", "0",  "''", "''", "0",  "1",  "0",  "6",   "5",   "640", "480",
                          "15", "0",  "0",  "0",  "0",  "14", "''", "640", "480", "0",   "0",
                          "''", "''", "''", "''", "''", "''", "''", "''",  "4"};
const Texts kAIPar = {"6", "-1", "0", "0",  "0",  "[]", "[]", "0", "''",
                      "0", "''", "0", "''", "''", "''", "''", "''"};
const Texts kAVParam = Texts{"-1", "4", "''", "-1", "-1", "-1", "13"} + kVBGParams +
                       Texts{"0", "3", "''", "''", "-1", "-1", "-1", "-1", "-1", "-1", "0"} +
                       kAIPar + Texts{"0", "0", "0", "0", "0", "0"};

template <typename Record>
void ExpectDeepCopies(void (*print)(Walk<Printer>&), void (*fill)(Walk<Filler>&)) {
    Record original;
    Filler filler{100};
    Visit(original, filler, fill);
    const Texts before = AllOf(original, print);

    Record copy(original);
    Record assigned;
    EXPECT_NE(AllOf(assigned, print), before);
    Record& same = (assigned = original);
    EXPECT_EQ(&same, &assigned);
    Filler again{5001};
    Visit(original, again, fill);
    EXPECT_EQ(AllOf(copy, print), before);
    EXPECT_EQ(AllOf(assigned, print), before);
    EXPECT_NE(AllOf(original, print), before);

    const Record& self = copy;
    copy = self;
    EXPECT_EQ(AllOf(copy, print), before);
    copy = Record();
    Record fresh;
    EXPECT_EQ(AllOf(copy, print), AllOf(fresh, print));
}

TEST(AVParam, All72MembersHaveTheirDefaultsInOrder) {
    AVParam param;
    EXPECT_EQ(AllOf(param, OfAVParam), kAVParam);
    EXPECT_EQ(kAVParam.size(), 72U);
}

TEST(AVParam, ADefaultRecordCopiedAndAssignedKeepsEveryDefault) {
    const AVParam param;
    AVParam copy(param);
    EXPECT_EQ(AllOf(copy, OfAVParam), kAVParam);
    AVParam assigned;
    Filler filler{1};
    Visit(assigned, filler, OfAVParam);
    assigned = param;
    EXPECT_EQ(AllOf(assigned, OfAVParam), kAVParam);
}

TEST(AVParam, TheSeventhAudioValueIsCopiedUnchanged) {
    AVParam param;
    param.audioFlags = -77;
    const AVParam copy(param);
    EXPECT_EQ(copy.audioFlags, -77);
    AVParam assigned;
    assigned = copy;
    EXPECT_EQ(assigned.audioFlags, -77);
}

TEST(AVParam, TheAudioFormatIsTheFirstThreeOfSevenAudioValues) {
    AVParam param;
    param.audioSampleRate = 44100;
    param.audioChannels = 2;
    param.audioSampleFmt = SAMPLE_FMT_S16;
    const Texts printed = AllOf(param, OfAVParam);
    const std::size_t first = 7 + kVBGParams.size() + 4;
    EXPECT_EQ(printed[first], "44100");
    EXPECT_EQ(printed[first + 1], "2");
    EXPECT_EQ(printed[first + 2], "1");
}

TEST(AVParam, CopiesAreDeep) {
    ExpectDeepCopies<AVParam>(OfAVParam, OfAVParam);
}

TEST(VBGParams, All31MembersHaveTheirDefaultsInOrder) {
    VBGParams params;
    EXPECT_EQ(AllOf(params, OfVBGParams), kVBGParams);
    EXPECT_EQ(kVBGParams.size(), 31U);
}

TEST(VBGParams, CopiesAreDeep) {
    ExpectDeepCopies<VBGParams>(OfVBGParams, OfVBGParams);
}

TEST(AIPar, All17MembersHaveTheirDefaultsInOrder) {
    AIPar params;
    EXPECT_EQ(AllOf(params, OfAIPar), kAIPar);
    EXPECT_EQ(kAIPar.size(), 17U);
}

TEST(AIPar, CopiesAreDeep) {
    ExpectDeepCopies<AIPar>(OfAIPar, OfAIPar);
}

TEST(BeautyInitParams, HoldsThreeEmptyTextsAndCopiesThemDeeply) {
    BeautyInitParams params;
    EXPECT_EQ(AllOf(params, OfBeautyInitParams), (Texts{"''", "''", "''"}));
    ExpectDeepCopies<BeautyInitParams>(OfBeautyInitParams, OfBeautyInitParams);
}

/// A record that owns `bytes`.
ProcessUsrData Holding(const std::string& bytes) {
    ProcessUsrData usr;
    usr.size = static_cast<std::int32_t>(bytes.size());
    usr.data = new char[bytes.size()];
    std::memcpy(usr.data, bytes.data(), bytes.size());
    return usr;
}

std::string BytesIn(const ProcessUsrData& usr) {
    return usr.data == nullptr ? "none" : std::string(usr.data, static_cast<std::size_t>(usr.size));
}

TEST(ProcessUsrData, StartsWithoutBytesAndSizeMinus1) {
    const ProcessUsrData usr;
    EXPECT_EQ(usr.size, -1);
    EXPECT_EQ(usr.data, nullptr);
    EXPECT_LT(reinterpret_cast<const char*>(&usr.size), reinterpret_cast<const char*>(&usr.data));
}

TEST(ProcessUsrData, ACopyHasBytesOfItsOwn) {
    const ProcessUsrData usr = Holding("four");
    const ProcessUsrData copy(usr);
    EXPECT_EQ(copy.size, 4);
    EXPECT_NE(copy.data, usr.data);
    usr.data[0] = 'F';
    EXPECT_EQ(BytesIn(copy), "four");
}

TEST(ProcessUsrData, ACopyOfARecordWithoutBytesIsADefaultRecord) {
    ProcessUsrData negative;
    negative.size = -5;
    ProcessUsrData sizeAlone;
    sizeAlone.size = 12;
    ProcessUsrData empty = Holding("x");
    empty.size = 0;
    for (const ProcessUsrData* usr : {&negative, &sizeAlone, &empty}) {
        const ProcessUsrData copy(*usr);
        EXPECT_EQ(copy.size, -1);
        EXPECT_EQ(copy.data, nullptr);
    }
}

TEST(ProcessUsrData, AssigningFromItselfChangesNothing) {
    ProcessUsrData usr = Holding("mine");
    const char* block = usr.data;
    const ProcessUsrData& self = usr;
    EXPECT_EQ(&(usr = self), &usr);
    EXPECT_EQ(usr.data, block);
    EXPECT_EQ(BytesIn(usr), "mine");

    usr.size = 0;  // a record that empties any other target
    usr = self;
    EXPECT_EQ(usr.data, block);
    EXPECT_EQ(usr.size, 0);
}

TEST(ProcessUsrData, AssigningEqualSizesKeepsTheBlock) {
    ProcessUsrData usr = Holding("four");
    const char* block = usr.data;
    const ProcessUsrData other = Holding("five");
    usr = other;
    EXPECT_EQ(usr.data, block);
    EXPECT_EQ(BytesIn(usr), "five");
    other.data[0] = 'F';
    EXPECT_EQ(BytesIn(usr), "five");
}

TEST(ProcessUsrData, AssigningAnotherSizeAllocatesABlockOfThatSize) {
    ProcessUsrData usr;
    for (const char* bytes : {"a longer text", "short", "x", "a text that is longer still"}) {
        usr = Holding(bytes);
        EXPECT_EQ(BytesIn(usr), bytes);
    }
}

TEST(ProcessUsrData, AssigningSize0OrNoBytesEmptiesTheTarget) {
    ProcessUsrData size0 = Holding("x");
    size0.size = 0;
    ProcessUsrData noBytes;
    noBytes.size = 4;
    ProcessUsrData negative = Holding("x");
    negative.size = -3;
    for (const ProcessUsrData* empty : {&size0, &noBytes, &negative}) {
        ProcessUsrData usr = Holding("four");
        usr = *empty;
        EXPECT_EQ(usr.size, -1);
        EXPECT_EQ(usr.data, nullptr);
    }
}

TEST(ProcessUsrData, ATargetWithASizeButNoBytesGetsABlock) {
    ProcessUsrData usr;
    usr.size = 4;
    usr = Holding("four");
    EXPECT_EQ(BytesIn(usr), "four");
}

}  // namespace
