#include <zelm/tree/ZDirty.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <thread>
#include <vector>

namespace {

struct Dirty : Zelm::Private::ZDirty {
    using ZDirty::setClean, ZDirty::setUpdating, ZDirty::setDirty;
};

TEST(Dirty, transitions) {
    Dirty dirty;
    dirty.setUpdating();
    EXPECT_TRUE(dirty.isClean() && dirty.getDirtyState() == 0 && dirty.getUpdateCount() == 0);
    EXPECT_TRUE(dirty.try_makeDirty() && dirty.try_makeDirty());
    EXPECT_TRUE(dirty.isDirty() && dirty.getDirtyState() == -1 && !dirty.isClean());
    dirty.setUpdating();
    dirty.setUpdating();
    EXPECT_TRUE(!dirty.try_makeDirty() && dirty.isUpdating() && !dirty.isDirty() && !dirty.isClean());
    EXPECT_TRUE(dirty.getDirtyState() == 1 && dirty.getUpdateCount() == 1);
    dirty.setClean();
    EXPECT_TRUE(dirty.isClean() && !dirty.isUpdating());
}

TEST(Dirty, one_of_several_threads_begins_an_update) {
    std::vector<Dirty> all(50000);
    const auto update = [&] { std::for_each(all.begin(), all.end(), [](Dirty& d) { d.setUpdating(); }); };
    for (int round = 0; round < 20; ++round) {
        std::for_each(all.begin(), all.end(), [](Dirty& dirty) { dirty.setDirty(); });
        std::thread other(update);
        update();
        other.join();
    }
    EXPECT_TRUE(std::all_of(all.begin(), all.end(), [](Dirty& d) { return d.getUpdateCount() == 20; }));
}

} // namespace
