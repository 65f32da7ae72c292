#pragma once
// Kernel preconditions. A broken one throws a plain text naming the condition
// and the place, so that drivers can report it without knowing kernel types.
// Checks stay on in every build: a wrong index in a stack corrupts a whole block.

#include <string>

namespace kernel_assert_detail
{
[[noreturn]] inline void fail(const char* condition, const char* file, int line)
{
    throw std::string(condition) + " failed at [" + file + ", line: " + std::to_string(line) + "]";
}
} // namespace kernel_assert_detail

#define MP_ASSERT(condition)                                                                                 \
    do                                                                                                       \
    {                                                                                                        \
        if (!(condition))                                                                                    \
            kernel_assert_detail::fail(#condition, __FILE__, __LINE__);                                      \
    } while (false)

// Same failure, with a text chosen by the caller where the checked expression
// differs from the one users are told about.
#define MP_ASSERT_TEXT(condition, text)                                                                      \
    do                                                                                                       \
    {                                                                                                        \
        if (!(condition))                                                                                    \
            kernel_assert_detail::fail(text, __FILE__, __LINE__);                                            \
    } while (false)
