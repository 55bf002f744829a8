#include <zelm/tree/ZDirty.h>
#include <zelm/tree/ZObject.h>

#include <support/ExpectThrow.h>

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <thread>

using namespace Zelm;

namespace {

TEST(Metadata, is_a_value_that_travels_with_its_owner) {
    EXPECT_EQ(ZString(ZObjectMetadata::MetadataFolder), ZString("__Metadata"));
    ZObject owner("T");
    const ZObject before = owner;
    EXPECT_EQ(owner.getMetadata().getObjectType(), ZObjectMetadata::objectType());
    EXPECT_FALSE(owner.propertyHandle().hasChild("__Metadata"));
    const ZObjectMetadata metadata(owner.getMetadata().propertyHandle().setChildValue("_dirt", true));
    owner.setMetadata(metadata);
    EXPECT_EQ(owner.getMetadata().propertyHandle().getName(), ZString("__Metadata"));
    EXPECT_TRUE(owner.getMetadata().propertyHandle().hasChild("_dirt"));
    EXPECT_FALSE(before.propertyHandle().hasChild("__Metadata"));
    const ZObject impostor(owner.propertyHandle().insertChild("__Metadata", ZGenericObject(before)), "T");
    EXPECT_EQ(impostor.getMetadata().getObjectType(), ZString("_Metadata"));
    EXPECT_FALSE(impostor.getMetadata().propertyHandle().hasChild("_dirt"));
    EXPECT_THROW_MSG(ZObjectMetadata(owner), std::logic_error, "_Metadata expected but not found");
}

TEST(Observer, keeps_path_and_type_in_its_metadata) {
    ZObserver link;
    EXPECT_EQ(link.getObjectType(), ZString("_Observer"));
    EXPECT_TRUE(link.linkedPath().empty());
    link.setLinkedPath("");
    EXPECT_TRUE(link.propertyHandle().hasChild("__Metadata"));
    link.setLinkedPath("../x");
    link.setLinkType("Variable");
    EXPECT_EQ(link.linkedPath(), ZString("../x"));
    const ZPropertyHandle metadata = link.propertyHandle().child("__Metadata");
    EXPECT_EQ(metadata.getObjectType(), ZString("_Metadata"));
    EXPECT_EQ(metadata.child("_type").getValue().value<ZString>(), ZString("Variable"));
    link.setLinkedPath("");
    EXPECT_FALSE(link.propertyHandle().child("__Metadata").hasChild("_path"));
    EXPECT_TRUE(metadata.hasChild("_path"));
    EXPECT_THROW_MSG(ZObserver(ZObject("T")), std::logic_error, "_Observer expected but not found");
}

struct OpenDirty : Private::ZDirty {
    using ZDirty::setClean;
    using ZDirty::setDirty;
    using ZDirty::setUpdating;
};

TEST(Dirty, transitions) {
    OpenDirty dirty;
    const auto stands = [&](int state, int updates) {
        return dirty.getDirtyState() == state && dirty.getUpdateCount() == updates &&
               dirty.isClean() == (state == 0) && dirty.isDirty() == (state == -1) &&
               dirty.isUpdating() == (state == 1);
    };
    EXPECT_TRUE(stands(0, 0));
    dirty.setUpdating();
    EXPECT_TRUE(stands(0, 0)) << "nothing to update";
    EXPECT_TRUE(dirty.try_makeDirty() && dirty.try_makeDirty() && stands(-1, 0));
    dirty.setUpdating();
    dirty.setUpdating();
    EXPECT_TRUE(stands(1, 1));
    EXPECT_FALSE(dirty.try_makeDirty());
    EXPECT_TRUE(stands(1, 1));
    dirty.setClean();
    EXPECT_TRUE(stands(0, 1));
    dirty.setDirty();
    EXPECT_TRUE(stands(-1, 1));
}

TEST(Dirty, one_of_several_threads_begins_an_update) {
    constexpr int rounds = 2000;
    OpenDirty dirty;
    std::atomic<int> arrived{0};
    const auto run = [&](bool leads) {
        for (int round = 1; round <= rounds; ++round) {
            if (leads) {
                dirty.setDirty();
            }
            ++arrived;
            while (arrived < 4 * round - 2) {
                std::this_thread::yield();
            }
            dirty.setUpdating();
            ++arrived;
            while (arrived < 4 * round) {
                std::this_thread::yield();
            }
        }
    };
    std::thread other(run, false);
    run(true);
    other.join();
    EXPECT_EQ(dirty.getUpdateCount(), rounds);
}

} // namespace
