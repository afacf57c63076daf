#include "scene/TraversalState.h"

#include "velmarexceptions.h"

#include <gtest/gtest.h>

namespace DependencyPathsTests {

using namespace Velmar;

namespace {

String messageOfMapping(const PathMap& map, const char* path) {
    try {
        mapDependencyPath(map, path);
    } catch (const VelmarException& exception) {
        return exception.getMessage();
    }
    return "";
}

} // namespace

TEST(MapDependencyPath, GivesTheNewPathAsOftenAsAsked) {
    PathMap map;
    map.insert("a.png", "D:\\pack\\a.png");
    EXPECT_EQ(mapDependencyPath(map, "a.png"), String("D:\\pack\\a.png"));
    EXPECT_EQ(mapDependencyPath(map, "a.png"), String("D:\\pack\\a.png"));
}

TEST(MapDependencyPath, ComparesBytesExactly) {
    PathMap map;
    map.insert("A.PNG", "x");
    map.insert("a.png\\", "x");
    EXPECT_EQ(messageOfMapping(map, "a.png"),
              String("While updating dependencies: Missing mapping for old path 'a.png'."));
}

TEST(MapDependencyPath, AnEmptyPathIsLookedUpLikeAnyOther) {
    PathMap map;
    EXPECT_EQ(messageOfMapping(map, ""), String("While updating dependencies: Missing mapping for old path ''."));
    map.insert("", "x");
    EXPECT_EQ(mapDependencyPath(map, ""), String("x"));
}

TEST(MapDependencyPath, FindsPathsWithBytesFrom0x80AfterTheTableHasGrown) {
    PathMap map;
    for (int i = 0; i < 100; ++i)
        map.insert(toVelmarString("\xC3\xA4" + std::to_string(i)), toVelmarString(std::to_string(i)));
    EXPECT_GT(map.bucketCount(), 4u);
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(mapDependencyPath(map, toVelmarString("\xC3\xA4" + std::to_string(i))),
                  toVelmarString(std::to_string(i)));
}

} // namespace DependencyPathsTests
