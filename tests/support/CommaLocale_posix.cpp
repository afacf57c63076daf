#include "tests/support/CommaLocale.h"
#include "tests/support/FileBytes.h"
#include "tests/support/System.h"
#include "tests/support/TempDir.h"

#include <clocale>
#include <cstdlib>
#include <stdexcept>
#include <string>

namespace TestSupport {

namespace {

/// Germany's numbers on top of the plainest of locales: all of Germany's takes seconds to make.
std::string localeSource() {
    std::string source;
    const auto copy = [&source](const std::string& category, const char* from) {
        source += category + "\ncopy \"" + from + "\"\nEND " + category + "\n";
    };
    for (const char* category : {"LC_CTYPE", "LC_COLLATE", "LC_MESSAGES", "LC_TIME"})
        copy(category, "POSIX");
    for (const char* category : {"LC_NUMERIC", "LC_MONETARY", "LC_PAPER", "LC_NAME", "LC_ADDRESS", "LC_TELEPHONE",
                                 "LC_MEASUREMENT", "LC_IDENTIFICATION"})
        copy(category, "de_DE");
    return source;
}

} // namespace

/// The system need not have the locale: it is made in a folder of its own.
struct CommaLocale::State {
    const TempDir folder;
    const ScopedVariable search_path{"LOCPATH", folder.path().c_str()};
    const std::string before = std::setlocale(LC_ALL, nullptr);
};

CommaLocale::CommaLocale() : state(std::make_unique<State>()) {
    const std::string& folder = state->folder.path();
    writeFileBytes(folder + "/source", localeSource());
    const std::string command = "localedef -i " + folder + "/source -f ISO-8859-1 " + folder + "/de_DE";
    if (std::system(command.c_str()) != 0) throw std::runtime_error("can't make a locale: " + command);
    if (std::setlocale(LC_ALL, "de_DE") == nullptr) throw std::runtime_error("can't use the locale that was made");
}

CommaLocale::~CommaLocale() {
    std::locale::global(before);
    std::setlocale(LC_ALL, state->before.c_str());
}

} // namespace TestSupport
