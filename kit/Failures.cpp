#include "kit/Failures.h"

#include "kit/velmarkit.h"
#include "velmarexceptions.h"

#include "renderer/LibraryCall.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <new>
#include <utility>

namespace Velmar::Kit {

namespace {

/// A thread's text. The block is made anew when a text doesn't fit.
struct ThreadText {
    std::size_t capacity;
    /// Of a text that found no memory.
    bool is_lost;
    /// A line about a failure was reported.
    bool has_line;
    char text[1];
};

constexpr const char* lost_text = "Out of memory, also for the text of this failure.";
constexpr std::size_t usual_capacity = 240;

[[noreturn]] void throwAssertion(const char* text) {
    throw KitFailure{VELMARKIT_INTERNAL_ERROR, std::string("Assertion failed: ") + text};
}

/// Broken invariants end a call here, and not the process.
[[maybe_unused]] const bool assertions_are_thrown = [] {
    failed_assertion_handler = throwAssertion;
    return true;
}();

ThreadText* blockFor(std::size_t size) {
    auto* const present = static_cast<ThreadText*>(getThreadBlock());
    if (present != nullptr && present->capacity >= size) return present;
    const std::size_t capacity = std::max(size, usual_capacity);
    auto* const made = static_cast<ThreadText*>(std::malloc(sizeof(ThreadText) + capacity));
    if (made == nullptr) return nullptr;
    *made = {capacity, false, present != nullptr && present->has_line, {}};
    if (!setThreadBlock(made)) {
        std::free(made);
        return nullptr;
    }
    std::free(present);
    return made;
}

std::int32_t fail(std::int32_t status, std::string_view text) noexcept {
    setLastText(text, {});
    return status;
}

bool beginsWith(std::string_view text, std::string_view beginning) {
    return text.substr(0, beginning.size()) == beginning;
}

/// The status of a failure of the library, whose class and text say little of its kind.
std::int32_t statusOf(Subject subject, std::string_view text) {
    constexpr std::string_view of_memory[] = {
        "An unhandled error has occured.", "Memory alloc failure while writing to",
        "Bad allocation while reading from file.", "Error while allocating image buffer: memory allocation failure."};
    constexpr std::string_view of_files[] = {
        "Failed to open file",  "Error while writing to", "Failed to create directory",
        "could not open file",  "GetFileSizeEx failed",   "CreateFileMapping failed",
        "MapViewOfFile failed", "fstat failed",           "mmap failed"};
    // After the path of a mesh file too.
    for (const std::string_view part : of_memory)
        if (text.find(part) != std::string_view::npos) return VELMARKIT_OUT_OF_MEMORY;
    for (const std::string_view beginning : of_files)
        if (beginsWith(text, beginning)) return VELMARKIT_FILE_ERROR;
    switch (subject) {
    case Subject::mesh:
        return VELMARKIT_MESH_ERROR;
    case Subject::scene:
    case Subject::model:
    case Subject::creators:
        return VELMARKIT_DOCUMENT_ERROR;
    case Subject::context:
    case Subject::renderer:
        return VELMARKIT_RENDERER_ERROR;
    default:
        return VELMARKIT_INTERNAL_ERROR;
    }
}

/// The status of an exception of a class that the library doesn't throw.
std::int32_t foreignStatusOf(Subject subject) {
    const bool calls_renderer_library = subject == Subject::context || subject == Subject::renderer;
    return calls_renderer_library ? VELMARKIT_RENDERER_ERROR : VELMARKIT_INTERNAL_ERROR;
}

std::int32_t failAs(Subject subject, std::string_view text) noexcept {
    return fail(statusOf(subject, text), text);
}

} // namespace

std::int32_t describeFailure(Subject subject) noexcept {
    try {
        throw;
    } catch (const Refusal& refusal) {
        setLastText(refusal.what, refusal.text);
        return refusal.status;
    } catch (const LibraryException& exception) {
        return fail(VELMARKIT_RENDERER_ERROR, exception.text());
    } catch (const KitFailure& failure) {
        return fail(failure.status, failure.text);
    } catch (const VelmarException& exception) {
        return failAs(subject, exception.getMessage().view());
    } catch (const Exception& exception) {
        return failAs(subject, exception.getMessage());
    } catch (const SceneParserExcep& exception) {
        return fail(VELMARKIT_DOCUMENT_ERROR, exception.getMessage().view());
    } catch (const SceneLoaderExcep& exception) {
        return fail(VELMARKIT_DOCUMENT_ERROR, exception.getMessage());
    } catch (const FileUtils::FileUtilsExcep& exception) {
        return fail(VELMARKIT_FILE_ERROR, exception.getMessage());
    } catch (const PlatformUtils::PlatformUtilsExcep& exception) {
        return fail(VELMARKIT_FILE_ERROR, exception.getMessage());
    } catch (const TransformPathExcep& exception) {
        return fail(VELMARKIT_DOCUMENT_ERROR, exception.getMessage());
    } catch (const NameMapExcep& exception) {
        return fail(VELMARKIT_MESH_ERROR, exception.getMessage());
    } catch (const std::bad_alloc&) {
        return fail(VELMARKIT_OUT_OF_MEMORY, "Out of memory.");
    } catch (const std::exception& exception) {
        return fail(foreignStatusOf(subject), exception.what());
    } catch (...) {
        return fail(foreignStatusOf(subject), "An unknown exception was thrown.");
    }
}

void setLastText(std::string_view first, std::string_view second) noexcept {
    ThreadText* const block = blockFor(first.size() + second.size());
    if (block == nullptr) {
        // The block of an earlier text can still say so.
        if (auto* const present = static_cast<ThreadText*>(getThreadBlock())) present->is_lost = true;
        return;
    }
    block->is_lost = false;
    if (!first.empty()) std::memcpy(block->text, first.data(), first.size());
    if (!second.empty()) std::memcpy(block->text + first.size(), second.data(), second.size());
    block->text[first.size() + second.size()] = '\0';
}

void noteFailureLine() noexcept {
    if (ThreadText* const block = blockFor(0)) block->has_line = true;
}

bool takeFailureLine() noexcept {
    auto* const block = static_cast<ThreadText*>(getThreadBlock());
    return block != nullptr && std::exchange(block->has_line, false);
}

const char* lastText() noexcept {
    const auto* const block = static_cast<const ThreadText*>(getThreadBlock());
    if (block == nullptr) return "";
    return block->is_lost ? lost_text : block->text;
}

} // namespace Velmar::Kit
