#include "velmarexceptions.h"

#include <exception>
#include <gtest/gtest.h>
#include <string>
#include <type_traits>

namespace ExceptionsTests {

namespace {

/// A class that carries its message through throwing and copying and is caught by its own type alone.
template <class Failure, class Message>
void expectCarriesMessage(const Message& text) {
    static_assert(!std::is_base_of_v<std::exception, Failure>);
    static_assert(std::is_copy_constructible_v<Failure>);
    try {
        throw Failure(text);
    } catch (const std::exception&) {
        FAIL() << "seen as a standard exception";
    } catch (Failure failure) {
        EXPECT_TRUE(failure.getMessage() == text);
    }
}

template <class First, class... Others>
constexpr bool standAlone() {
    constexpr bool unrelated = ((!std::is_base_of_v<First, Others> && !std::is_base_of_v<Others, First>)&&... && true);
    if constexpr (sizeof...(Others) == 0)
        return unrelated;
    else
        return unrelated && standAlone<Others...>();
}

const std::string long_text = "a message that doesn't fit into any inline buffer";

} // namespace

static_assert(
    standAlone<Velmar::VelmarException, Velmar::Exception, Velmar::SceneParserExcep, Velmar::SceneLoaderExcep,
               FileUtils::FileUtilsExcep, PlatformUtils::PlatformUtilsExcep, TransformPathExcep, NameMapExcep>());

TEST(Exceptions, CarryTheirMessage) {
    expectCarriesMessage<Velmar::VelmarException>(Velmar::toVelmarString(long_text));
    expectCarriesMessage<Velmar::SceneParserExcep>(Velmar::toVelmarString(long_text));
    expectCarriesMessage<Velmar::Exception>(long_text);
    expectCarriesMessage<Velmar::SceneLoaderExcep>(long_text);
    expectCarriesMessage<FileUtils::FileUtilsExcep>(long_text);
    expectCarriesMessage<PlatformUtils::PlatformUtilsExcep>(long_text);
    expectCarriesMessage<TransformPathExcep>(long_text);
    expectCarriesMessage<NameMapExcep>(long_text);
}

} // namespace ExceptionsTests
