#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

/// One line on a terminal that tells what is being done and for how long. Where nobody watches it writes nothing.
class Progress {
  public:
    explicit Progress(bool quiet);
    /// Takes the line away.
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Tells the next step, from now on.
    void show(std::string_view step);

    /// Takes the line away until the next step, so that something else can be printed.
    void clear();

  private:
    using Clock = std::chrono::steady_clock;

    void draw();
    void erase();
    void run();

    bool shown;
    bool ended = false;
    std::string text;
    std::size_t drawn_width = 0;
    Clock::time_point start;
    std::mutex mutex;
    std::condition_variable wake;
    std::thread ticker;
};
