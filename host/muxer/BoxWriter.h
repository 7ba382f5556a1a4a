#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>
#include <type_traits>
#include <vector>

namespace quill::host {

using Bytes = std::vector<uint8_t>;

/** A view of bytes, which must outlive it. */
struct ByteView {
    const uint8_t* data = nullptr;
    size_t size = 0;

    ByteView() = default;
    ByteView(const uint8_t* bytes, size_t count) : data(bytes), size(count) {}
    ByteView(const Bytes& bytes) : data(bytes.data()), size(bytes.size()) {}

    /** True if `text` is at `offset`. */
    bool holdsAt(size_t offset, std::string_view text) const {
        return offset <= size && text.size() <= size - offset &&
               std::string_view(reinterpret_cast<const char*>(data) + offset, text.size()) == text;
    }
};

/** The one narrowing cast of the muxer: nothing if `value` does not fit. */
template <typename To, typename From>
std::optional<To> narrow(From value) {
    static_assert(std::is_unsigned_v<To> && std::is_unsigned_v<From>, "only for unsigned types");
    if (value > std::numeric_limits<To>::max()) return std::nullopt;
    return static_cast<To>(value);
}

/**
 * Appends ISO/IEC 14496-12 boxes, big-endian. Every number is checked against the width of its field: one that does
 * not fit clears `ok`, and the result is then invalid.
 */
class BoxWriter {
  public:
    /** The start of a box, where `finishBox` writes the size. */
    struct Marker {
        size_t offset;
    };

    Marker beginBox(std::string_view type);
    Marker beginFullBox(std::string_view type, uint8_t version, uint32_t flags);
    void finishBox(Marker marker);

    void put8(uint64_t value) { put(value, 1); }
    void put16(uint64_t value) { put(value, 2); }
    void put32(uint64_t value) { put(value, 4); }
    void put64(uint64_t value) { put(value, 8); }
    /** Big-endian in `width` bytes, 1 to 8. */
    void put(uint64_t value, unsigned width);
    void putFourCc(std::string_view code);
    void putString(std::string_view text);  ///< with its closing zero
    void putBytes(ByteView bytes);

    void reserve(size_t size) { mBytes.reserve(size); }
    size_t size() const { return mBytes.size(); }
    bool ok() const { return mOk; }
    const Bytes& bytes() const { return mBytes; }
    Bytes take() { return std::move(mBytes); }

  private:
    Bytes mBytes;
    bool mOk = true;
};

}  // namespace quill::host
