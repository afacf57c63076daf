#include "utils/Module.h"

#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

TEST(Module, FindsTheSymbolsOfALoadedLibrary) {
    void* const module = Velmar::loadModule("libm.so.6");
    ASSERT_NE(nullptr, module) << Velmar::getModuleErrorText();
    auto* const cosine = reinterpret_cast<double (*)(double)>(Velmar::findSymbol(module, "cos"));
    ASSERT_NE(nullptr, cosine);
    EXPECT_EQ(1.0, cosine(0.0));
    EXPECT_EQ(nullptr, Velmar::findSymbol(module, "no_such_symbol"));
    Velmar::unloadModule(module);
}

TEST(Module, TheReasonNamesTheFile) {
    Velmar::loadModule("/nowhere\\missing.so");
    EXPECT_NE(std::string::npos, Velmar::getModuleErrorText().find("/nowhere/missing.so"));
}

TEST(AbsolutePath, OfAMissingFileIsThePathItself) {
    EXPECT_EQ("missing\\file", Velmar::getAbsolutePath("missing\\file"));
}
