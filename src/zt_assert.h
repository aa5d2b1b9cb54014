// Contract checks that stop the process in every build type, NDEBUG included.
//
// The failure is reported through the C library's own assertion routine, so
// the message has the usual "file:line: function: Assertion `text' failed."
// shape; the file, line and function are given explicitly because they are
// part of what hosts see and log.
#ifndef ZTUTIL_SRC_ZT_ASSERT_H
#define ZTUTIL_SRC_ZT_ASSERT_H

extern "C" void __assert_fail(const char* assertion, const char* file, unsigned int line,
                              const char* function) noexcept __attribute__((__noreturn__));

#define ZT_CONTRACT_ASSERT(condition, text, file, line, function) \
    ((condition) ? static_cast<void>(0) : __assert_fail((text), (file), (line), (function)))

#endif
