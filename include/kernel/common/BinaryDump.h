#pragma once
// Field-by-field binary dump of kernel objects: raw native little-endian
// bytes, no padding, no tags. Texts and arrays carry a 32-bit length first.
// Readers clear their target first and report failure through the stream state.

#include <cstdint>
#include <istream>
#include <ostream>
#include <string>
#include <type_traits>
#include <vector>

namespace dump
{

// Bounds that keep a corrupt length from turning into a huge allocation.
constexpr int32_t MAX_DUMP_TEXT = 1 << 26;
constexpr int32_t MAX_DUMP_RESERVE = 1 << 20;

template <typename T> void write(std::ostream& out, const T& value)
{
    static_assert(std::is_trivially_copyable_v<T>, "only plain fields are dumped raw");
    out.write(reinterpret_cast<const char*>(&value), sizeof(T));
}

template <typename T> bool read(std::istream& in, T& value)
{
    static_assert(std::is_trivially_copyable_v<T>, "only plain fields are dumped raw");
    in.read(reinterpret_cast<char*>(&value), sizeof(T));
    return static_cast<bool>(in);
}

inline void write_text(std::ostream& out, const std::string& text)
{
    write(out, static_cast<int32_t>(text.size()));
    out.write(text.data(), static_cast<std::streamsize>(text.size()));
}

inline bool read_text(std::istream& in, std::string& text)
{
    text.clear();
    int32_t size = 0;
    if (!read(in, size) || size < 0 || size > MAX_DUMP_TEXT)
    {
        in.setstate(std::ios::failbit);
        return false;
    }
    text.resize(static_cast<size_t>(size));
    in.read(text.data(), size);
    return static_cast<bool>(in);
}

// Counted array of plain values.
template <typename T> void write_array(std::ostream& out, const std::vector<T>& values)
{
    write(out, static_cast<int32_t>(values.size()));
    for (const T& v : values)
        write(out, v);
}

template <typename T> bool read_array(std::istream& in, std::vector<T>& values)
{
    values.clear();
    int32_t count = 0;
    if (!read(in, count) || count < 0)
    {
        in.setstate(std::ios::failbit);
        return false;
    }
    // A corrupt count must not allocate the machine away: grow as we read.
    values.reserve(static_cast<size_t>(count < MAX_DUMP_RESERVE ? count : MAX_DUMP_RESERVE));
    for (int32_t k = 0; k < count; ++k)
    {
        T v{};
        if (!read(in, v))
            return false;
        values.push_back(v);
    }
    return true;
}

} // namespace dump
