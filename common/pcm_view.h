#pragma once

#include <cstddef>
#include <cstring>
#include <type_traits>

namespace audio_filter::internal {

/// PCM samples at any address. Hosts pass bytes and need not align a block to its sample size;
/// memcpy is defined at every address and free at an aligned one. A view of const samples is
/// read-only.
template <typename Sample>
class PcmView {
public:
    using Value = std::remove_const_t<Sample>;
    using Address = std::conditional_t<std::is_const_v<Sample>, const void*, void*>;

    PcmView(Address data, std::size_t samples) : mData(static_cast<Byte*>(data)), mSize(samples) {}

    std::size_t Size() const { return mSize; }

    Value Get(std::size_t index) const {
        Value value;
        std::memcpy(&value, mData + index * sizeof(Value), sizeof(Value));
        return value;
    }

    void Set(std::size_t index, Value value) {
        std::memcpy(mData + index * sizeof(Value), &value, sizeof(Value));
    }

    /// `count` samples, starting at `first`.
    PcmView Part(std::size_t first, std::size_t count) const {
        return {mData + first * sizeof(Value), count};
    }

    /// The same bytes as whole elements of another type.
    template <typename Other>
    PcmView<Other> As() const {
        return {mData, mSize * sizeof(Value) / sizeof(Other)};
    }

private:
    using Byte = std::conditional_t<std::is_const_v<Sample>, const char, char>;

    Byte* mData;
    std::size_t mSize;
};

}  // namespace audio_filter::internal
