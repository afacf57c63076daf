#pragma once

#include "velmarexceptions.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

/// Operations on paths, which are UTF-8 byte strings with `\` (or, where given, `/`) as separator on every system.
/// They are converted just before a call of the system.
namespace FileUtils {

/// The text before the last `/` or `\`. Empty when there is none, or when the only one is the first byte.
std::string getDirectory(std::string_view path);

/// The text after the last dot of the whole path, directories included. Empty when there is none or it is the last
/// byte.
std::string getExtension(std::string_view path);

/// Without `getExtension` at the end, and without one dot that then ends the text.
std::string removeExtension(std::string_view path);

/// `text` without `suffix` at its end, or `text` when it doesn't end so.
std::string removeSuffix(std::string_view text, std::string_view suffix);

/// `path` as seen from `dir`: `path` itself when `dir` is empty or `path` begins with a drive, `\` or `/`; otherwise
/// the two with a `\` between, whatever `dir` ends with.
std::string join(std::string_view dir, std::string_view path);

/// `path` with every `/` replaced by `\`.
std::string toBackslashes(std::string_view path);

/// In place, every byte equal to `from` becomes `to`.
void replaceChar(std::string& text, char from, char to);

/// Without the trailing run of spaces, tabs, line feeds and carriage returns.
std::string trimTrailingWhitespace(std::string_view text);

/// Without the mark that some editors of Windows write before UTF-8.
std::string_view withoutByteOrderMark(std::string_view text);

/// Only the bytes A to Z change.
std::string toLowerCase(std::string_view text);

/// Whether `path` names a file or a directory. If not, and `error_code` isn't null, it receives the system's error
/// code.
bool fileExists(std::string_view path, std::uint32_t* error_code = nullptr);

/// Makes one directory, whose parent must exist. Throws `FileUtilsExcep` with the system's text on failure, also when
/// the directory exists already.
void createDir(std::string_view path);

/// Opens `path` in `file` for output, overwriting an existing file. With `text_mode` line feeds become the
/// system's line ends. Returns whether that worked; on failure `file` is in its fail state.
bool openOutputFile(std::ofstream& file, std::string_view path, bool text_mode);

/// A name for a file that is written next to another one and then replaces it, so that no reader ever sees half of it.
/// The destructor removes what has that name.
class TemporaryFile {
  public:
    /// For the file `final_path` (UTF-8). Nothing is created.
    explicit TemporaryFile(std::string_view final_path);
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    const std::string& path() const { return temporary_path; }

    /// Gives the file, which is closed, its final name, in place of a file that has it. Returns whether that worked.
    bool moveToFinalPath() noexcept;

  private:
    std::string temporary_path;
    // Made beforehand: when memory is exhausted the file is still removed.
    std::filesystem::path native_path;
    std::filesystem::path native_final_path;
};

} // namespace FileUtils
