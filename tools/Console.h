#pragma once

#include "velmarvec.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <functional>
#include <mutex>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>

/// What a person at the keyboard reads: errors, progress, and the forms of text that all commands share.

// ---- errors ------------------------------------------------------------------------------------------------------

/// The work couldn't be done. The text is for the user; the program ends with code 1.
class Failure : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The arguments make no sense together. The program ends with code 2.
class UsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Something failed and was reported already. The program ends with code 1.
class ReportedFailure : public std::exception {};

/// The same for a command for which code 1 is an answer. The program ends with code 2.
class ReportedTrouble : public std::exception {};

/// Prints a line on the standard error output.
void printError(const std::string& message);

/// Prints a line about something that the user may not expect, but that doesn't keep the work from being done.
void printNote(const std::string& message);

/// Prints a line of a result on the standard output, with control characters as \xNN.
void printResult(const std::string& line);

/// The text of the exception being handled, of whatever class. Only to be called in a handler.
std::string getCurrentMessage();

/// The failure of the exception being handled, naming `path` unless its text does so already. Only in a handler.
Failure makeFailureOf(const std::string& path);

// ---- progress ----------------------------------------------------------------------------------------------------

/// One line on a terminal that shows the current step and its duration. Writes nothing where no one watches.
class Progress {
  public:
    explicit Progress(bool quiet);
    /// Erases the line.
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Shows the next step from now on. `done` of the whole work, from 0 to 1, is complete then: from that follow the
    /// percentage and the remaining time of long work.
    void show(std::string_view step, double done = 0);

    /// Erases the line until the next step, so that something else can be printed.
    void clear();

    /// Erases the line while `print` prints something else. No other thread draws it meanwhile.
    void interrupt(const std::function<void()>& print);

  private:
    using Clock = std::chrono::steady_clock;

    void draw();
    void erase();
    void run();
    std::string describeRest() const;

    bool shown;
    bool ended = false;
    std::string text;
    std::size_t drawn_width = 0;
    double fraction = 0;
    const Clock::time_point begin = Clock::now();
    Clock::time_point start;
    std::mutex mutex;
    std::condition_variable wake;
    std::thread ticker;
};

// ---- text --------------------------------------------------------------------------------------------------------

namespace Text {

/// The number and the word in its form for it: "1 quad", "2 quads".
std::string count(std::uint64_t number, std::string_view one, std::string_view many);

/// "4 vertices, 2 triangles, 0 quads".
std::string faceCounts(std::uint64_t vertices, std::uint64_t triangles, std::uint64_t quads);

/// The shortest digits that read back as the same number, whatever the locale.
std::string number(float value);
std::string number(double value);

/// "(1, 0.5, 2)".
std::string point(const Velmar::Vec3f& p);

/// A line of a table with a name in front.
std::string row(std::string_view name, std::string_view value);

/// "512 bytes", "3.1 KB", "1.2 GB".
std::string size(std::uint64_t bytes);

/// `text` with control characters as \xNN: names come from files, and a terminal obeys some of them.
std::string printable(std::string_view text);

/// The part of a path after its last separator.
std::string fileName(std::string_view path);

/// The part of a path up to and including its last separator.
std::string folderOf(std::string_view path);

/// `fileName` without its extension.
std::string fileStem(std::string_view path);

/// `path` as seen from `folder`.
std::string joinPaths(std::string_view folder, std::string_view path);

} // namespace Text
