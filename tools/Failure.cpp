#include "tools/Failure.h"

#include "velmarexceptions.h"

#include "tools/Text.h"
#include "utils/FileUtils.h"

#include <cstdio>
#include <exception>

void printError(const std::string& message) {
    // Names come from files and disks, and a terminal obeys some characters.
    std::fprintf(stderr, "velmar: %s\n", Text::printable(message).c_str());
}

// The library's exceptions stand side by side without a common base.
std::string getCurrentMessage() {
    try {
        throw;
    } catch (const Velmar::VelmarException& e) {
        return std::string(e.getMessage().view());
    } catch (const Velmar::Exception& e) {
        return e.getMessage();
    } catch (const Velmar::SceneParserExcep& e) {
        return std::string(e.getMessage().view());
    } catch (const Velmar::SceneLoaderExcep& e) {
        return e.getMessage();
    } catch (const FileUtils::FileUtilsExcep& e) {
        return e.getMessage();
    } catch (const PlatformUtils::PlatformUtilsExcep& e) {
        return e.getMessage();
    } catch (const TransformPathExcep& e) {
        return e.getMessage();
    } catch (const NameMapExcep& e) {
        return e.getMessage();
    } catch (const std::bad_alloc&) {
        return "not enough memory";
    } catch (const std::exception& e) {
        return e.what();
    } catch (...) {
        return "an unknown error";
    }
}

Failure makeFailureOf(const std::string& path) {
    std::string message = getCurrentMessage();
    const std::string inner_path = FileUtils::toBackslashes(path);
    // The mesh readers name the file so, and leave the quotation open.
    const std::string opening = "Error while reading mesh '" + path + ": ";
    if (message.starts_with(opening)) message.erase(0, opening.size());
    const bool named = message.find(path) != std::string::npos || message.find(inner_path) != std::string::npos;
    return Failure(named ? message : path + ": " + message);
}
