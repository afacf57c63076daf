#include "tests/support/TempDir.h"
#include "utils/System.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <dlfcn.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <locale.h>
#include <new>
#include <pthread.h>
#include <string>
#include <thread>
#include <unistd.h>

using namespace Velmar;

using TestSupport::TempDir;

TEST(Module, FindsTheSymbolsOfALoadedLibrary) {
    std::string error;
    void* const module = Velmar::loadModule("libm.so.6", error);
    ASSERT_NE(nullptr, module) << error;
    auto* const cosine = reinterpret_cast<double (*)(double)>(Velmar::findSymbol(module, "cos"));
    ASSERT_NE(nullptr, cosine);
    EXPECT_EQ(1.0, cosine(0.0));
    EXPECT_EQ(nullptr, Velmar::findSymbol(module, "no_such_symbol"));
    Velmar::unloadModule(module);
}

TEST(Module, TheReasonNamesTheFile) {
    std::string error;
    Velmar::loadModule("/nowhere\\missing.so", error);
    EXPECT_NE(std::string::npos, error.find("/nowhere/missing.so"));
}

TEST(Module, LoadsBelowAWorkingDirectoryWithABackslashInItsName) {
    const TempDir dir;
    const std::filesystem::path folder = FileUtils::toSystemPath(dir.path()) / "a\\b";
    std::filesystem::create_directory(folder);
    Dl_info math = {};
    ASSERT_NE(0, dladdr(reinterpret_cast<void*>(static_cast<double (*)(double)>(std::cos)), &math));
    std::filesystem::copy_file(std::filesystem::canonical(math.dli_fname), folder / "library.so");

    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(folder);
    std::string error;
    void* const module = Velmar::loadModule("library.so", error);
    std::filesystem::current_path(before);
    EXPECT_NE(nullptr, module) << error;
    Velmar::unloadModule(module);
}

namespace {

pthread_mutex_t* mutexIn(Velmar::CriticalSectionSlot& slot) {
    return std::launder(reinterpret_cast<pthread_mutex_t*>(slot.bytes));
}

int tryFromAnotherThread(pthread_mutex_t* mutex) {
    int result = 0;
    std::thread([&] {
        result = pthread_mutex_trylock(mutex);
        if (result == 0) pthread_mutex_unlock(mutex);
    }).join();
    return result;
}

void expectWorkingMutex(Velmar::CriticalSectionSlot& slot) {
    pthread_mutex_t* const mutex = mutexIn(slot);
    EXPECT_EQ(0, pthread_mutex_lock(mutex));
    EXPECT_EQ(0, pthread_mutex_lock(mutex)) << "the owner may enter again";
    EXPECT_EQ(EBUSY, tryFromAnotherThread(mutex));
    pthread_mutex_unlock(mutex);
    pthread_mutex_unlock(mutex);
    EXPECT_EQ(0, tryFromAnotherThread(mutex));
}

} // namespace

TEST(CriticalSection, IsAWorkingMutexInItsSlot) {
    Velmar::CriticalSectionSlot slot;
    std::memset(slot.bytes, 0xEE, sizeof slot.bytes);
    Velmar::constructCriticalSection(slot);
    expectWorkingMutex(slot);
    Velmar::destroyCriticalSection(slot);
}

TEST(ConditionVariable, IsZerosInItsSlot) {
    Velmar::ConditionVariableSlot slot;
    std::memset(slot.bytes, 0xEE, sizeof slot.bytes);
    Velmar::constructConditionVariable(slot);
    EXPECT_EQ(8, std::count(slot.bytes, slot.bytes + 8, 0));
}

TEST(OwnedMutex, HoldsAWorkingMutex) {
    const Velmar::OwnedMutex owned;
    expectWorkingMutex(owned.getCriticalSection());
}

TEST(PlainNumericLocale, GivesTheThreadItsOwnLocaleBack) {
    const locale_t hosts = newlocale(LC_ALL_MASK, "C.UTF-8", locale_t{});
    ASSERT_NE(hosts, locale_t{});
    const locale_t before = uselocale(hosts);
    {
        const PlainNumericLocale plain;
        EXPECT_NE(uselocale(locale_t{}), hosts);
        EXPECT_STREQ(localeconv()->decimal_point, ".");
    }
    EXPECT_EQ(uselocale(locale_t{}), hosts);
    uselocale(before);
    freelocale(hosts);
}
