#include <zelm/tree/ZObject.h>

#include <support/ExpectThrow.h>
#include <text/Allocations.h>

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

using namespace Zelm;
using Zelm::Testing::allocationsOf;

namespace {

/// Opens what derived classes may use.
class Sample : public ZObject {
public:
    Sample() : ZObject("Sample") {}
    Sample(ZGenericObject object) : ZObject(std::move(object), "Sample") {}

    using ZObject::addChild, ZObject::deleteChild, ZObject::findChildValue, ZObject::getChildBoolWithDefault,
        ZObject::getChildPropertyValueWithDefault, ZObject::getChildren, ZObject::getChildrenIncludingLinks,
        ZObject::getChildStringWithDefault, ZObject::getEnumeratedChildren, ZObject::getObserver,
        ZObject::hasChild, ZObject::insertOrReplaceChild, ZObject::insertOrReplaceObserver,
        ZObject::isEnumeratedName, ZObject::mutate, ZObject::setChildPropertyValue, ZObject::setProperty,
        ZObject::setPropertyHandle;

    void setNumbered(const Sample& member, const ZString& number) {
        mutate([&](ZMutablePropertyHandle& self) {
            self.getOrCreateChild("Members").attachChild(number, member.propertyHandle());
        });
    }
    Sample numbered(const ZString& number) const {
        return Sample(propertyHandle().child("Members").child(number));
    }
};

static_assert(std::is_nothrow_move_constructible_v<Sample> && std::is_nothrow_move_assignable_v<Sample>);
static_assert(!std::is_convertible_v<ZString, ZObject>);

bool reads(const ZPropertyHandle& handle, int value) {
    return handle.getValue().isEquivalentTo(value);
}

template <class List>
std::vector<std::string> namesOf(const List& children) {
    std::vector<std::string> names;
    for (const auto& [name, child] : children) {
        names.emplace_back(name.data(), name.size());
    }
    return names;
}

ZObserver linkTo(const ZObject& target) {
    ZObserver link;
    ZPropertyHandle tree = link.propertyHandle().insertChild("Link", ZGenericObject(target));
    return ZObserver(tree);
}

TEST(Object, a_changed_copy_never_changes_its_source) {
    Sample x, y, a, b;
    x.setProperty("v", 1);
    y.setProperty("v", 2);
    a.setNumbered(x, "0");
    a.setNumbered(x, "1");
    b.setNumbered(a, "0");
    Sample c = b.numbered("0");
    const auto inA = a.propertyHandle().child("Members").sharedNode()->version();
    c.setNumbered(y, "0");
    EXPECT_EQ(inA.generation, c.propertyHandle().sharedNode()->generation()) << "the numbers must collide";
    EXPECT_TRUE(reads(c.numbered("0").propertyHandle().child("v"), 2));
    EXPECT_TRUE(reads(a.numbered("0").propertyHandle().child("v"), 1));
    EXPECT_TRUE(reads(b.numbered("0").numbered("0").propertyHandle().child("v"), 1));

    Sample copy(a), assigned, moved(std::move(b));
    assigned = a;
    copy.setProperty("p", 1);
    assigned.deleteChild("Members");
    moved.deleteChild("Members");
    EXPECT_FALSE(a.hasChild("p"));
    EXPECT_TRUE(a.hasChild("Members") && b.hasChild("Members"));
}

TEST(Object, construction_rebases_and_tests_the_type) {
    Sample member, owner;
    member.setProperty("v", 1);
    owner.addChild("inner", member);
    const ZPropertyHandle inner = owner.propertyHandle().child("inner");
    Sample view(inner);
    EXPECT_TRUE(view.propertyHandle().path().empty());
    EXPECT_EQ(view.propertyHandle().getName(), ZString("inner"));
    EXPECT_EQ(view.propertyHandle().basis()->generations(), inner.basis()->generations());
    EXPECT_EQ(ZObject(view).propertyHandle().getName(), ZString("inner"));
    view.setProperty("v", 2);
    EXPECT_TRUE(reads(owner.propertyHandle().child("inner").child("v"), 1));
    EXPECT_EQ(ZObject("T").propertyHandle().getName(), ZString());
    EXPECT_THROW_MSG(ZObject(inner, "Other"), std::logic_error, "Other expected but not found");
    view.setPropertyHandle(inner);
    EXPECT_TRUE(view.propertyHandle().path().empty() && reads(view.propertyHandle().child("v"), 1));
}

TEST(Object, without_a_tree_everything_but_assignment_fails) {
    const std::string text = "Unable to resolve path: empty basis";
    ZObject none;
    EXPECT_THROW_MSG(ZObject(none), std::runtime_error, text);
    EXPECT_THROW_MSG(none.getObjectType(), std::runtime_error, text);
    EXPECT_THROW_MSG(none.setMetadata(ZObjectMetadata()), std::runtime_error, text);
    EXPECT_THROW_MSG(ZObject(ZGenericObject(), "T"), std::runtime_error, text);
    EXPECT_EQ(none.getMetadata().getObjectType(), ZString("_Metadata"));
    Sample sample;
    static_cast<ZObject&>(sample) = none;
    EXPECT_THROW_MSG(sample.hasChild("x"), std::runtime_error, text);
    EXPECT_THROW_MSG(sample.getChildPropertyValueWithDefault("x", 1), std::runtime_error, text);
    EXPECT_THROW_MSG(sample.getChildren(), std::runtime_error, text);
    EXPECT_THROW_MSG(sample.insertOrReplaceObserver("l", ZObserver()), std::runtime_error, text);
    EXPECT_TRUE(sample.getChildBoolWithDefault("x", true));
    EXPECT_TRUE(ZObject(std::move(none)).propertyHandle().isEmpty());
}

TEST(Object, children_and_properties) {
    Sample member, object;
    object.addChild("m", member);
    object.insertOrReplaceChild("m2", member);
    object.setProperty("p", 1);
    object.setChildPropertyValue("q", 2);
    EXPECT_EQ(object.propertyHandle().sharedNode()->generation(), 5u);
    EXPECT_TRUE(object.getChildPropertyValueWithDefault("p", 9).isEquivalentTo(1));
    EXPECT_TRUE(object.getChildPropertyValueWithDefault("absent", 9).isEquivalentTo(9));
    EXPECT_TRUE(object.getChildPropertyValueWithDefault("m", 9).isEquivalentTo(Variant()));
    EXPECT_TRUE(object.findChildValue("q")->isEquivalentTo(2));
    EXPECT_EQ(object.findChildValue("absent"), nullptr);
    object.setProperty("m", 3);
    EXPECT_TRUE(object.propertyHandle().child("m").getObjectType().empty());
    EXPECT_THROW_MSG(object.addChild("", member), std::invalid_argument, "Name cannot be empty.");
    EXPECT_THROW_MSG(object.insertOrReplaceChild("", member), std::invalid_argument,
                     "Name can't be empty for Sample -- ZObject::insertOrReplaceChild()");
    EXPECT_THROW_MSG(object.insertOrReplaceChild("", ZObject("")), std::invalid_argument,
                     "Name can't be empty for  -- ZObject::insertOrReplaceChild()");
    object.deleteChild("m2");
    object.deleteChild("m2");
    EXPECT_EQ(namesOf(object.getChildren()), (std::vector<std::string>{"m", "p", "q"}));
    const ZPropertyHandle before = object.propertyHandle();
    const auto failing = [](ZMutablePropertyHandle& self) {
        self.setChildValue("half", 1);
        throw std::runtime_error("stop");
    };
    EXPECT_THROW_MSG(object.mutate(failing), std::runtime_error, "stop");
    EXPECT_EQ(object.propertyHandle().sharedNode(), before.sharedNode());
}

TEST(Object, typed_reading_of_children) {
    Sample object;
    object.setProperty("yes", true);
    object.setProperty("text", "word");
    object.addChild("null", ZObject("T"));
    EXPECT_TRUE(object.getChildBoolWithDefault("yes", false));
    for (const ZString name : {"text", "null", "absent"}) {
        EXPECT_TRUE(object.getChildBoolWithDefault(name, true)) << name.data();
        EXPECT_FALSE(object.getChildBoolWithDefault(name, false)) << name.data();
    }
    EXPECT_EQ(object.getChildStringWithDefault("text", "x"), ZString("word"));
    EXPECT_EQ(object.getChildStringWithDefault("absent", "x"), ZString("x"));
    EXPECT_ANY_THROW(object.getChildStringWithDefault("null", "x"));
}

TEST(Object, links_are_seen_through_by_one_level) {
    Sample target, object;
    target.setProperty("v", 1);
    object.addChild("direct", target);
    object.addChild("link", linkTo(target));
    object.addChild("twice", linkTo(linkTo(target)));
    const auto seen = object.getChildren();
    EXPECT_EQ(namesOf(seen), (std::vector<std::string>{"direct", "link", "twice"}));
    EXPECT_EQ(seen[1].second.getName(), ZString("Link"));
    EXPECT_EQ(seen[1].second.sharedNode(), seen[0].second.sharedNode());
    EXPECT_EQ(seen[2].second.getObjectType(), ZString("_Observer"));
    EXPECT_EQ(object.getChildrenIncludingLinks()[1].second.getObjectType(), ZString("_Observer"));

    object.addChild("Item1", target);
    object.addChild("broken", ZObserver());
    EXPECT_THROW_MSG(object.getChildren(), std::runtime_error, "Property \"Link\" not found");
    EXPECT_EQ(namesOf(object.getEnumeratedChildren("Item")), std::vector<std::string>{"Item1"});
    object.addChild("Item2", ZObserver());
    EXPECT_THROW_MSG(object.getEnumeratedChildren("Item"), std::runtime_error, "Property \"Link\" not found");
}

TEST(Object, enumerated_names_are_those_that_stoul_takes) {
    Sample object;
    for (const ZString name : {"Item0", "Item10", "Item12x", "Item2", "Item", "Itemx", "item1"}) {
        object.setProperty(name, 1);
    }
    EXPECT_EQ(namesOf(object.getEnumeratedChildren("Item")),
              (std::vector<std::string>{"Item0", "Item10", "Item12x", "Item2"}));
    for (const std::string tail : {"",
                                   "0",
                                   "007",
                                   " 5",
                                   "\t\n\v\f\r5",
                                   "-7",
                                   "+7",
                                   "+-7",
                                   "- 7",
                                   "x",
                                   "0x1F",
                                   ".5",
                                   "4294967296",
                                   "18446744073709551615",
                                   "18446744073709551616",
                                   "-18446744073709551615",
                                   "-18446744073709551616",
                                   "99999999999999999999",
                                   "000000000000000000000000000001",
                                   "5 ",
                                   "\x80"
                                   "5",
                                   "\xA0"
                                   "5"}) {
        bool taken = true;
        try {
            static_cast<void>(std::stoul(tail, nullptr, 10));
        } catch (const std::logic_error&) {
            taken = false;
        }
        EXPECT_EQ(Sample::isEnumeratedName(ZString("P" + tail), ZString("P")), taken) << tail;
        EXPECT_EQ(Sample::isEnumeratedName(ZString(tail), ZString()), taken) << tail;
    }
}

TEST(Object, observers_live_in_folders) {
    Sample target, object;
    target.setProperty("v", 1);
    object.insertOrReplaceObserver("first", linkTo(target), "Folder");
    Sample old = object;
    object.insertOrReplaceObserver("second", linkTo(target), "Folder");
    object.insertOrReplaceObserver("bare", linkTo(target));
    EXPECT_FALSE(old.propertyHandle().child("Folder").hasChild("second"));
    EXPECT_EQ(object.propertyHandle().child("Folder").childrenCopy().size(), 2u);
    EXPECT_EQ(object.propertyHandle().child("bare").getObjectType(), ZString("_Observer"));
    ZObserver link = object.getObserver("first", "Folder");
    EXPECT_TRUE(reads(link.propertyHandle().child("Link").child("v"), 1));
    object.addChild("Other", target);
    EXPECT_THROW_MSG(object.getObserver("v", "Other"), std::runtime_error, "Link expected but not found");
    EXPECT_THROW_MSG(object.getObserver("x", "Folder"), std::runtime_error, "Property \"x\" not found");
    EXPECT_THROW_MSG(object.getObserver("x", "Nowhere"), std::runtime_error,
                     "Property \"Nowhere\" not found");
    EXPECT_THROW_MSG(object.getObserver("bare", ""), std::runtime_error, "Property \"\" not found");
}

TEST(Object, costs) {
    Sample big, object;
    for (int i = 0; i < 200; ++i) {
        big.setProperty(ZString(std::to_string(i)), i);
    }
    const ZString key = "7";
    Variant value, fallback(0);
    EXPECT_EQ(0, allocationsOf([&] {
                  value = big.getChildPropertyValueWithDefault(key, std::move(fallback));
                  const Sample copy(big);
              }));
    EXPECT_TRUE(value.isEquivalentTo(7));
    const long inserting = allocationsOf([&] { object.addChild(key, big); });
    EXPECT_TRUE(inserting > 1 && inserting < 15) << inserting;
}

TEST(Object, exhausted_memory_leaves_the_object_on_its_version) {
    Sample member, object;
    member.setNumbered(member, "0");
    object.setNumbered(member, "0");
    const ZPropertyHandle before = object.propertyHandle();
    int failures = 0;
    for (bool done = false; !done; failures += !done) {
        Testing::failAllocationAfter(failures);
        try {
            object.setNumbered(member, "1");
            done = true;
        } catch (const std::bad_alloc&) {
            EXPECT_EQ(object.propertyHandle().sharedNode(), before.sharedNode());
            EXPECT_EQ(before.child("Members").childrenCopy().size(), 1u);
        }
    }
    Testing::failAllocationAfter(-1);
    EXPECT_GT(failures, 5);
    EXPECT_EQ(object.propertyHandle().child("Members").childrenCopy().size(), 2u);
    static_cast<ZObject&>(object) = ZObject();
    Testing::failAllocationAfter(0);
    static_cast<ZObject&>(member) = ZObject();
    Testing::failAllocationAfter(-1);
}

} // namespace
