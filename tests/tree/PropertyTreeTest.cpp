#include <zelm/tree/ZPropertyTree.h>

#include <support/ExpectThrow.h>

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

using namespace Zelm;

namespace {

/// root "doc" { "a" = 1 { "b" = 2 }, "z" = 3 }, in one version.
ZPropertyHandle sample() {
    ZMutablePropertyTree tree("doc");
    tree.handle().addChildValue("a", 1).addChildValue("b", 2);
    tree.handle().setChildValue("z", 3);
    return tree.immutableHandle();
}

TEST(PropertyTree, failures_have_their_texts) {
    const std::string emptyBasis = "Unable to resolve path: empty basis";
    const ZPropertyHandle none;
    const ZPropertyHandle root = sample();
    const ZPropertyHandle lost(root.basis(), {"a", "zz", "c"});
    EXPECT_THROW_MSG(none.access(), std::runtime_error, emptyBasis);
    EXPECT_THROW_MSG(none.getName(), std::runtime_error, emptyBasis);
    EXPECT_THROW_MSG(none.rename("x"), std::runtime_error, emptyBasis);
    EXPECT_THROW_MSG(root.insertChild("x", none), std::runtime_error, emptyBasis);
    EXPECT_THROW_MSG(ZMutablePropertyHandle().setValue(1), std::runtime_error, emptyBasis);
    EXPECT_THROW_MSG(ZMutablePropertyTree::adopt(nullptr).setName("x"), std::runtime_error, emptyBasis);
    EXPECT_THROW_MSG(lost.removeChild("x"), std::runtime_error, "Unable to resolve path: \"zz\" not found");
    EXPECT_THROW_MSG(root.insertChild("", none), std::invalid_argument, "Name cannot be empty.");
    EXPECT_THROW_MSG(root.child("a").child("A"), std::runtime_error, "Property \"A\" not found");
    EXPECT_THROW_MSG(none.parentPath(), std::runtime_error, "No path to parent");
}

TEST(PropertyTree, a_version_takes_one_generation_and_shares_what_it_does_not_change) {
    const ZPropertyHandle first = sample();
    const ZPropertyHandle a = first.child("a");
    const ZPropertyHandle second = a.setChildValue("n", 5);
    EXPECT_EQ(first.node().generation(), 1u);
    EXPECT_EQ(second.basis()->root()->generation(), 2u);
    EXPECT_EQ(a.removeChild("absent").basis()->root()->generation(), 3u);
    EXPECT_EQ(second.child("n").sharedNode()->generation(), 2u);
    EXPECT_EQ(second.child("b").sharedNode(), a.child("b").sharedNode());
    EXPECT_EQ(a.rename("z").sharedNode(), a.sharedNode());
    EXPECT_EQ(first.insertChild("g", a).child("g").sharedNode(), a.sharedNode());
    EXPECT_THROW_MSG(a.rename("a").getValue(), std::runtime_error, "Unable to resolve path: \"a\" not found");
}

TEST(PropertyTree, equivalence_looks_at_values_and_names_alone) {
    const ZPropertyHandle root = sample();
    const auto retype = [](ZMutablePropertyHandle& self) { self.setObjectType("T"); };
    EXPECT_TRUE(root.isEquivalentTo(root.rename("x").changed(retype).setChildValue("z", 3.0)));
    for (const ZPropertyHandle& other :
         {root.setChildValue("z", 4), root.child("z").rename("y"), root.removeChild("z"),
          root.child("a").setChildValue("b", 9), root.child("a").removeChild("b")}) {
        EXPECT_FALSE(root.isEquivalentTo(ZPropertyHandle(other.basis())));
    }
    const ZPropertyHandle nan = root.setChildValue("n", std::numeric_limits<double>::quiet_NaN());
    EXPECT_FALSE(nan.isEquivalentTo(nan));
}

TEST(PropertyTree, trees_made_from_a_published_version_derive_from_it) {
    const ZPropertyHandle root = sample();
    const ZMutablePropertyTree fromMoved{ZPropertyHandle::BasisPointer(root.basis())};
    fromMoved.handle({"a"}).setValue(100);
    EXPECT_EQ(fromMoved.immutableHandle().sharedNode()->generation(), 2u);
    const auto change = [](ZMutablePropertyTree& version) {
        return version.handle({"a"}).getOrCreateChild("b").addChildValue("deep", 4);
    };
    const ZPropertyHandle deep = ZPropertyHandle::withMutation(root.basis(), change);
    EXPECT_EQ(deep.path(), (std::vector<ZString>{"a", "b", "deep"}));
    EXPECT_TRUE(deep.getValue().isEquivalentTo(4));
    EXPECT_TRUE(root.isEquivalentTo(sample()));
}

/// A chain of nodes, each of which is the child of the one before, or two children of it.
std::shared_ptr<const ZPropertyTreeNode> chain(int last, bool twice = false) {
    const Private::ZPropertyVersion version{1, 0};
    auto node = std::make_shared<ZPropertyTreeNode>(version, last);
    for (int depth = 0; depth < 100000; ++depth) {
        auto parent = std::make_shared<ZPropertyTreeNode>(version);
        parent->attachChild("x", node);
        parent->attachChild(twice ? "y" : "x", node);
        node = std::move(parent);
    }
    return node;
}

TEST(PropertyTree, deep_trees_are_compared_and_destroyed_without_recursion) {
    const auto one = chain(1);
    EXPECT_TRUE(one->isEquivalentTo(*chain(1)));
    EXPECT_FALSE(one->isEquivalentTo(*chain(2)));
    chain(1, true);
}

TEST(PropertyTree, threads_read_one_handle_and_change_and_drop_their_own_versions) {
    const ZPropertyHandle shared = sample().changed([](ZMutablePropertyHandle& self) {
        for (int i = 0; i < 500; ++i) {
            self.setChildValue(ZString(std::to_string(i)), i);
        }
    });
    const auto run = [&] {
        ZPropertyHandle own = shared;
        for (int i = 0; i < 200; ++i) {
            const ZString name(std::to_string(i * 2));
            own = own.setChildValue("k", i).insertChild("before", own).removeChild(name);
            EXPECT_TRUE(own.child("before").hasChild(name) && own.child("k").getValue().isEquivalentTo(i));
        }
    };
    std::thread one(run), two(run);
    one.join();
    two.join();
    EXPECT_EQ(shared.basis()->generations()->next(), 1203u);
}

} // namespace
