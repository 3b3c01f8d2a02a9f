#include "common/process_data.h"

#include <cstring>
#include <new>

#include "common/result_code.h"
#include "common/steady_time.h"

using namespace audio_filter::internal;

ProcessData::~ProcessData() {
    Free();
}

ProcessData* ProcessData::SelfCopy() {
    mRefCount.fetch_add(1);
    return this;
}

void ProcessData::SelfRelease() {
    std::int32_t count = mRefCount.load();
    do {
        if (count == 0) {
            return;
        }
    } while (!mRefCount.compare_exchange_weak(count, count - 1));
    if (count != 1) {
        return;
    }
    mLastRelease = SteadyMilliseconds();
    if (mCallback != nullptr) {
        size = 0;
        mCallback(mContext, this);
    }
}

std::int32_t ProcessData::GetRefCount() const {
    return mRefCount;
}

unsigned long long ProcessData::GetLastReleaseTime() const {
    return mLastRelease;
}

int ProcessData::Reset(int bytes) {
    if (bytes < 1) {
        return RESULT_FAILURE;
    }
    if (capacity >= bytes) {
        return capacity;
    }
    char* grown = new (std::nothrow) char[static_cast<std::size_t>(bytes)]();
    if (grown == nullptr) {
        return RESULT_FAILURE;
    }
    if (data != nullptr) {
        std::memcpy(grown, data, static_cast<std::size_t>(capacity));
        delete[] data;
    }
    data = grown;
    capacity = bytes;
    return capacity;
}

void ProcessData::Free() {
    delete[] data;
    data = nullptr;
    capacity = 0;
    ReleaseUserData();
    mRefCount = 0;
}

void ProcessData::SetFree(ReleaseCallback callback, void* context) {
    mCallback = callback;
    mContext = context;
}

int ProcessData::WriteData(char* source, int bytes, AVParam avParam, unsigned long long time,
                           ProcessUsrData* usr) {
    return Fill(source, bytes, &avParam, time, usr);
}

int ProcessData::WriteData(char* source, int bytes, unsigned long long time, ProcessUsrData* usr) {
    return Fill(source, bytes, nullptr, time, usr);
}

int ProcessData::Fill(const char* source, int bytes, const AVParam* avParam,
                      unsigned long long time, const ProcessUsrData* usr) {
    if (bytes < 0 || (source == nullptr && bytes > 0)) {
        return RESULT_FAILURE;
    }
    if (capacity < bytes && Reset(bytes) == RESULT_FAILURE) {
        return RESULT_FAILURE;
    }
    try {
        if (avParam != nullptr) {
            param = *avParam;
        }
        if (usr == nullptr) {
            ReleaseUserData();
        } else if (userData == nullptr) {
            userData = new ProcessUsrData(*usr);
        } else {
            *userData = *usr;
        }
    } catch (const std::bad_alloc&) {
        return RESULT_FAILURE;
    }
    if (bytes > 0) {
        std::memcpy(data, source, static_cast<std::size_t>(bytes));
    }
    size = bytes;
    timestamp = time;
    mRefCount = 1;
    return RESULT_OK;
}

void ProcessData::ReleaseUserData() {
    delete userData;
    userData = nullptr;
}
