#include "tools/OutputFile.h"

#include "tools/System.h"
#include "utils/FileUtils.h"
#include "utils/MappedFile.h"
#include "utils/PlatformUtils.h"

#include <fstream>
#include <utility>

OutputFile::OutputFile(std::string path)
    : given_path(std::move(path)), final_path(System::getAbsolutePath(given_path)),
      partial_path(final_path + "-partial") {
    if (System::isDirectory(final_path)) throw Failure(given_path + ": is a directory");
    std::ofstream file;
    if (!FileUtils::openOutputFile(file, partial_path, false))
        throw Failure(given_path + ": can't be written: " + PlatformUtils::getLastErrorText());
}

OutputFile::~OutputFile() {
    if (!partial_path.empty()) System::removeFile(partial_path);
}

Failure OutputFile::makeFailure() const {
    std::string message = getCurrentMessage();
    const std::size_t at = message.find(partial_path);
    if (at != std::string::npos) return Failure(message.replace(at, partial_path.size(), given_path));
    return Failure(given_path + ": " + message);
}

std::uint64_t OutputFile::commit() {
    const std::uint64_t size = MappedFile(partial_path).getSize();
    if (!System::moveFile(partial_path, final_path))
        throw Failure(given_path + ": can't be replaced: " + PlatformUtils::getLastErrorText());
    partial_path.clear();
    return size;
}
