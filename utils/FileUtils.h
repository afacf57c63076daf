#pragma once

#include "velmarexceptions.h"

#include <cstdio>
#include <fstream>
#include <string>
#include <string_view>

/// Operations on paths, which are UTF-8 byte strings with `\` (or, where given, `/`) as separator on every system.
/// What the system's calls need is made of them just before the call.
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

/// Every `/` becomes `\`.
std::string toBackslashes(std::string_view path);

/// In place, every byte equal to `from` becomes `to`.
void replaceChar(std::string& text, char from, char to);

/// Without the trailing run of spaces, tabs, line feeds and carriage returns.
std::string trimTrailingWhitespace(std::string_view text);

/// Only the bytes A to Z change.
std::string toLowerCase(std::string_view text);

/// Whether something stands at `path`, be it a file or a directory.
bool fileExists(std::string_view path);

/// Makes one directory, whose parent must be there. Throws `FileUtilsExcep` with the system's text when it can't, also
/// when the directory is there already.
void createDir(std::string_view path);

/// Opens `path` in `file` for output, so that what is there is replaced. With `text_mode` line feeds become the
/// system's line ends. Returns whether that worked; on failure `file` is in its fail state.
bool openOutputFile(std::ofstream& file, std::string_view path, bool text_mode);

/// Opens `path` for binary reading by C functions. Returns null on failure. The caller closes it.
std::FILE* openInputFile(std::string_view path);

} // namespace FileUtils
