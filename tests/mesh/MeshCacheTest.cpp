#include "mesh/MeshLoading.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace MeshCacheTests {

using namespace Velmar;

namespace {

String pathOf(int i) {
    return toVelmarString("folder\\a rather long name " + std::to_string(i) + ".obj");
}

TEST(MeshCache, FindsByPathAndScale) {
    MeshCache cache;
    const Reference<Mesh> mesh(new Mesh);
    const Reference<Mesh> scaled(new Mesh);
    cache.insert("a.obj", 1.0, mesh);
    cache.insert("a.obj", 2.0, scaled);
    EXPECT_EQ(cache.find("a.obj", 1.0), mesh.getPointer());
    EXPECT_EQ(cache.find("a.obj", 2.0), scaled.getPointer());
    EXPECT_EQ(cache.find("a.obj", 3.0), nullptr);
    EXPECT_EQ(cache.find("b.obj", 1.0), nullptr);
    EXPECT_EQ(cache.size(), 2u);
}

TEST(MeshCache, KeepsTheFirstMeshOfAKey) {
    MeshCache cache;
    const Reference<Mesh> first(new Mesh);
    cache.insert("a.obj", 1.0, first);
    cache.insert("a.obj", 1.0, Reference<Mesh>(new Mesh));
    EXPECT_EQ(cache.find("a.obj", 1.0), first.getPointer());
    EXPECT_EQ(cache.size(), 1u);
}

TEST(MeshCache, KeepsNothingForTheKeyOfFreePlaces) {
    MeshCache cache;
    const Reference<Mesh> mesh(new Mesh);
    for (int i = 0; i < 100; ++i)
        cache.insert("", -1.0, mesh);
    EXPECT_EQ(cache.find("", -1.0), nullptr);
    EXPECT_EQ(mesh->getRefCount(), 1);
    EXPECT_EQ(cache.size(), 0u);
    EXPECT_EQ(cache.bucketCount(), 32u);
}

TEST(MeshCache, TakesTheSixteenthEntryOnlyAfterGrowing) {
    MeshCache cache;
    for (int i = 0; i < 15; ++i)
        cache.insert(pathOf(i), 1.0, Reference<Mesh>(new Mesh));
    EXPECT_EQ(cache.bucketCount(), 32u);
    cache.insert(pathOf(3), 1.0, Reference<Mesh>(new Mesh));
    EXPECT_EQ(cache.bucketCount(), 32u) << "a hit changes nothing";
    cache.insert(pathOf(15), 1.0, Reference<Mesh>(new Mesh));
    EXPECT_EQ(cache.bucketCount(), 64u);
    EXPECT_EQ(cache.size(), 16u);
}

TEST(MeshCache, FindsAllEntriesAfterGrowingOftenAndHoldsEachOnce) {
    MeshCache cache;
    std::vector<Reference<Mesh>> meshes;
    for (int i = 0; i < 500; ++i) {
        meshes.emplace_back(new Mesh);
        cache.insert(pathOf(i), 0.5, meshes.back());
    }
    for (int i = 0; i < 500; ++i) {
        EXPECT_EQ(cache.find(pathOf(i), 0.5), meshes[static_cast<std::size_t>(i)].getPointer());
        EXPECT_EQ(meshes[static_cast<std::size_t>(i)]->getRefCount(), 2);
    }
}

TEST(MeshCache, KeepsManyScalesOfOnePathApart) {
    MeshCache cache;
    std::vector<Reference<Mesh>> meshes;
    // Ascending and descending, so that entries meet both smaller and larger scales on the way to their place.
    for (int i = 0; i < 500; ++i) {
        meshes.emplace_back(new Mesh);
        cache.insert("a.obj", i % 2 == 0 ? 1000.0 - i : 1.0 + i, meshes.back());
    }
    EXPECT_EQ(cache.size(), 500u);
    for (int i = 0; i < 500; ++i)
        EXPECT_EQ(cache.find("a.obj", i % 2 == 0 ? 1000.0 - i : 1.0 + i),
                  meshes[static_cast<std::size_t>(i)].getPointer());
}

TEST(MeshCache, ReleasesItsMeshesAtTheEnd) {
    const Reference<Mesh> mesh(new Mesh);
    {
        MeshCache cache;
        cache.insert("a.obj", 1.0, mesh);
        EXPECT_EQ(mesh->getRefCount(), 2);
    }
    EXPECT_EQ(mesh->getRefCount(), 1);
}

} // namespace

} // namespace MeshCacheTests
