#pragma once

#include "Runtime.h"

/// Checks of a program that has no test library. A failure is printed and counted.

extern int failures;

/// What the program does.
void run();

inline void check(bool holds, const char* what, const char* of = "") {
    if (holds) return;
    ++failures;
    puts("FAILED:");
    puts(what);
    puts(of);
}

#define CHECK(condition, ...) check((condition), #condition __VA_OPT__(, ) __VA_ARGS__)

/// Has a destructor that must run when an exception passes.
class Witness {
  public:
    explicit Witness(int& count_) : count(count_) {}
    ~Witness() { ++count; }
    Witness(const Witness&) = delete;
    Witness& operator=(const Witness&) = delete;

  private:
    int& count;
};

inline bool isText(const char* data, size_t size, const char* wanted) {
    return size == strlen(wanted) && memcmp(data, wanted, size) == 0;
}
inline bool isText(const Velmar::String& text, const char* wanted) {
    return isText(text.data(), text.size(), wanted);
}
inline bool isText(const std::string& text, const char* wanted) {
    return isText(text.c_str(), text.size(), wanted) && text.c_str()[text.size()] == 0;
}
