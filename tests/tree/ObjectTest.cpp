#include <zelm/tree/ZObject.h>

#include <support/Allocations.h>
#include <support/ExpectThrow.h>

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

using namespace Zelm;

namespace {

/// Opens what derived classes may use.
struct Sample : ZObject {
    Sample() : ZObject("Sample") {}
    Sample(ZGenericObject object) : ZObject(std::move(object), "Sample") {}

    using ZObject::addChild, ZObject::deleteChild, ZObject::getChildBoolWithDefault,
        ZObject::getChildPropertyValueWithDefault, ZObject::getChildren, ZObject::getChildrenIncludingLinks,
        ZObject::getChildStringWithDefault, ZObject::getEnumeratedChildren, ZObject::getObserver,
        ZObject::insertOrReplaceChild, ZObject::insertOrReplaceObserver, ZObject::isEnumeratedName,
        ZObject::setChildPropertyValue, ZObject::setProperty;
};

static_assert(std::is_nothrow_move_constructible_v<Sample> && std::is_nothrow_move_assignable_v<Sample>);

ZObserver linkTo(const ZObject& target) {
    return ZObserver(ZObserver().propertyHandle().insertChild("Link", ZGenericObject(target)));
}

TEST(Object, construction_rebases_and_a_changed_copy_never_changes_its_source) {
    Sample owner, member, twin;
    member.setProperty("v", 1);
    twin.setProperty("v", 1);
    owner.addChild("inner", member);
    const ZPropertyHandle inner = owner.propertyHandle().child("inner");
    Sample view(inner), copy(view), moved(std::move(view));
    for (Sample* object : {&copy, &moved}) {
        EXPECT_TRUE(object->propertyHandle().path().empty() && object->propertyHandle().getName() == "inner");
        EXPECT_EQ(object->propertyHandle().basis()->generations(), inner.basis()->generations());
        object->setProperty("v", 2);
        EXPECT_FALSE(object->propertyHandle().isEquivalentTo(twin.propertyHandle()));
        for (const ZPropertyHandle& source : {inner, member.propertyHandle(), view.propertyHandle()}) {
            EXPECT_TRUE(source.isEquivalentTo(twin.propertyHandle()));
        }
    }
}

TEST(Object, failures_have_their_texts) {
    const std::string noTree = "Unable to resolve path: empty basis";
    ZObject none, assigned("T");
    Sample object;
    assigned = none;
    EXPECT_THROW_MSG(ZObject(none), std::runtime_error, noTree);
    EXPECT_THROW_MSG(none.setMetadata(ZObjectMetadata()), std::runtime_error, noTree);
    EXPECT_TRUE(ZObject(std::move(assigned)).propertyHandle().isEmpty());
    EXPECT_THROW_MSG(ZObject(object, "Other"), std::logic_error, "Other expected but not found");
    EXPECT_THROW_MSG(object.addChild("", object), std::invalid_argument, "Name cannot be empty.");
    EXPECT_THROW_MSG(object.insertOrReplaceChild("", ZObject("")), std::invalid_argument,
                     "Name can't be empty for  -- ZObject::insertOrReplaceChild()");
}

TEST(Object, children_and_properties) {
    Sample object;
    object.insertOrReplaceChild("m", object);
    object.setProperty("yes", true);
    object.setChildPropertyValue("text", "word");
    EXPECT_TRUE(object.getChildPropertyValueWithDefault("absent", 9).isEquivalentTo(9));
    EXPECT_TRUE(object.getChildPropertyValueWithDefault("m", 9).isEquivalentTo(Variant()));
    EXPECT_TRUE(object.getChildBoolWithDefault("yes", false));
    for (const ZString name : {"text", "m", "absent"}) {
        EXPECT_TRUE(object.getChildBoolWithDefault(name, true) &&
                    !object.getChildBoolWithDefault(name, false));
    }
    EXPECT_EQ(object.getChildStringWithDefault("text", "x"), ZString("word"));
    EXPECT_EQ(object.getChildStringWithDefault("absent", "x"), ZString("x"));
    EXPECT_ANY_THROW(object.getChildStringWithDefault("m", "x"));
    object.setProperty("m", 3);
    EXPECT_TRUE(object.getChildren()[0].second.getObjectType().empty());
    object.deleteChild("text");
    EXPECT_EQ(object.getChildren().size(), 2u);
}

TEST(Object, enumerated_names_are_those_that_stoul_takes) {
    for (const std::string tail :
         {"", "007", " 5", "\t\n\v\f\r5", "-7", "+-7", "- 7", "x", "0x1F", ".5", "18446744073709551615",
          "18446744073709551616", "-18446744073709551616", "99999999999999999999", "5 ", "\2005", "\2405"}) {
        bool taken = true;
        try {
            static_cast<void>(std::stoul(tail, nullptr, 10));
        } catch (const std::logic_error&) {
            taken = false;
        }
        EXPECT_EQ(Sample::isEnumeratedName(ZString("P" + tail), "P"), taken) << tail;
    }
}

TEST(Object, links_live_in_folders_and_are_seen_through_by_one_level) {
    Sample object;
    object.insertOrReplaceObserver("first", linkTo(object), "Folder");
    const ZPropertyHandle old = object.propertyHandle().child("Folder");
    object.insertOrReplaceObserver("second", linkTo(object), "Folder");
    object.insertOrReplaceObserver("Item1", linkTo(linkTo(object)));
    EXPECT_TRUE(old.childrenCopy().size() == 1 && object.getChildren()[0].second.childrenCopy().size() == 2);
    EXPECT_TRUE(object.getObserver("first", "Folder").propertyHandle().hasChild("Link"));
    EXPECT_EQ(object.getChildren()[1].second.path(), (std::vector<ZString>{"Item1", "Link"}));
    EXPECT_EQ(object.getChildrenIncludingLinks()[1].second.path(), std::vector<ZString>{"Item1"});
    EXPECT_THROW_MSG(object.getObserver("m", "Item1"), std::runtime_error, "Property \"m\" not found");
    EXPECT_THROW_MSG(object.getObserver("Item1", ""), std::runtime_error, "Property \"\" not found");
    object.addChild("broken", object);
    EXPECT_THROW_MSG(object.getObserver("Folder", "broken"), std::runtime_error,
                     "Link expected but not found");
    object.addChild("broken", ZObserver());
    EXPECT_THROW_MSG(object.getChildren(), std::runtime_error, "Property \"Link\" not found");
    EXPECT_EQ(object.getEnumeratedChildren("Item").size(), 1u);
}

TEST(Object, metadata_hold_path_and_type_of_a_link_and_are_empty_if_there_are_none) {
    ZObserver link;
    const ZGenericObject before = link;
    link.setLinkedPath("");
    EXPECT_TRUE(link.propertyHandle().hasChild("__Metadata"));
    link.setLinkedPath("../x");
    EXPECT_EQ(link.linkedPath(), ZString("../x"));
    link.setLinkedPath("");
    link.setLinkType("Variable");
    const ZPropertyHandle metadata = link.getMetadata().propertyHandle();
    EXPECT_FALSE(metadata.hasChild("_path"));
    EXPECT_EQ(metadata.child("_type").getValue().value<ZString>(), ZString("Variable"));
    const ZGenericObject impostor = before.insertChild("__Metadata", before);
    for (const ZObject& owner : {ZObject(before, "_Observer"), ZObject(impostor, "_Observer")}) {
        EXPECT_EQ(owner.getMetadata().getObjectType(), ZString("_Metadata"));
    }
    EXPECT_FALSE(ZObject().getMetadata().propertyHandle().isEmpty());
}

TEST(Object, costs_and_exhausted_memory) {
    Sample big, object;
    for (int i = 0; i < 200; ++i) {
        big.setProperty(ZString(std::to_string(i)), i);
    }
    Variant value(0);
    const auto read = [&] { value = Sample(big).getChildPropertyValueWithDefault("7", std::move(value)); };
    EXPECT_EQ(Testing::allocationsOf(read), 0);
    long failures = 0;
    for (; failures < 15 && object.getChildren().empty(); ++failures) {
        Testing::failAllocationAfter(failures);
        try {
            object.addChild("big", big);
        } catch (const std::bad_alloc&) {}
        Testing::failAllocationAfter(-1);
    }
    EXPECT_TRUE(failures > 2 && failures < 15) << failures;
}

} // namespace
