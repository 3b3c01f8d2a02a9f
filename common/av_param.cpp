#include "common/av_param.h"

#include <cstring>

VBGParams::VBGParams() = default;
VBGParams::VBGParams(const VBGParams& other) = default;
VBGParams& VBGParams::operator=(const VBGParams& other) = default;
VBGParams::~VBGParams() = default;

AIPar::AIPar() = default;
AIPar::AIPar(const AIPar& other) = default;
AIPar& AIPar::operator=(const AIPar& other) = default;
AIPar::~AIPar() = default;

BeautyInitParams::BeautyInitParams() = default;
BeautyInitParams::BeautyInitParams(const BeautyInitParams& other) = default;
BeautyInitParams& BeautyInitParams::operator=(const BeautyInitParams& other) = default;
BeautyInitParams::~BeautyInitParams() = default;

AVParam::AVParam() = default;
AVParam::AVParam(const AVParam& other) = default;
AVParam& AVParam::operator=(const AVParam& other) = default;
AVParam::~AVParam() = default;

ProcessUsrData::ProcessUsrData() = default;

ProcessUsrData::ProcessUsrData(const ProcessUsrData& other) {
    *this = other;
}

ProcessUsrData& ProcessUsrData::operator=(const ProcessUsrData& other) {
    if (this == &other) {
        return *this;
    }
    if (!other.HasBytes()) {
        delete[] data;
        data = nullptr;
        size = -1;
        return *this;
    }
    const auto bytes = static_cast<std::size_t>(other.size);
    if (data == nullptr || size != other.size) {
        char* grown = new char[bytes];
        delete[] data;
        data = grown;
        size = other.size;
    }
    std::memcpy(data, other.data, bytes);
    return *this;
}

ProcessUsrData::~ProcessUsrData() {
    delete[] data;
}
