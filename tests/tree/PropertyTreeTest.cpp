#include <zelm/tree/ZPropertyTree.h>

#include <support/ExpectThrow.h>

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

using namespace Zelm;

namespace {

using Path = ZPropertyHandle::Path;

/// root "doc" { "a" of type "A", value 1 { "b" = 2 }, "z" = 3 }, in one version.
ZPropertyHandle sample() {
    ZMutablePropertyTree tree("doc");
    ZMutablePropertyHandle root = tree.handle();
    ZMutablePropertyHandle a = root.addChildValue("a", 1);
    a.setObjectType("A");
    a.addChildValue("b", 2);
    root.setChildValue("z", 3);
    return tree.immutableHandle();
}

bool reads(const ZPropertyHandle& handle, int value) {
    return handle.getValue().isEquivalentTo(value);
}

ZPropertyHandle rootOf(const ZPropertyHandle& handle) {
    return ZPropertyHandle(handle.basis());
}

template <class Handle, class = void>
struct CanAccess : std::false_type {};
template <class Handle>
struct CanAccess<Handle, std::void_t<decltype(std::declval<Handle>().access())>> : std::true_type {};

static_assert(CanAccess<const ZPropertyHandle&>::value && CanAccess<ZMutablePropertyHandle&>::value);
static_assert(!CanAccess<ZPropertyHandle>::value && !CanAccess<ZMutablePropertyHandle>::value);
static_assert(std::is_nothrow_move_constructible_v<ZPropertyHandle>);

TEST(PropertyTree, failures_have_their_texts) {
    const std::string emptyBasis = "Unable to resolve path: empty basis";
    const ZPropertyHandle none;
    const ZPropertyHandle root = sample();
    const ZPropertyHandle lost(root.basis(), Path{"a", "zz", "c"});
    EXPECT_THROW_MSG(none.access(), std::runtime_error, emptyBasis);
    EXPECT_THROW_MSG(none.getName(), std::runtime_error, emptyBasis);
    EXPECT_THROW_MSG(none.getValue(), std::runtime_error, emptyBasis);
    EXPECT_THROW_MSG(none.child("a"), std::runtime_error, emptyBasis);
    EXPECT_THROW_MSG(none.begin(), std::runtime_error, emptyBasis);
    EXPECT_THROW_MSG(none.rename("x"), std::runtime_error, emptyBasis);
    EXPECT_THROW_MSG(none.removeChild("x"), std::runtime_error, emptyBasis);
    EXPECT_THROW_MSG(none.setChildValue("x", 1), std::runtime_error, emptyBasis);
    EXPECT_THROW_MSG(none.insertChild("x", root), std::runtime_error, emptyBasis);
    EXPECT_THROW_MSG(root.insertChild("x", none), std::runtime_error, emptyBasis);
    EXPECT_THROW_MSG(root.isEquivalentTo(none), std::runtime_error, emptyBasis);
    EXPECT_THROW_MSG(root.insertChild("", none), std::invalid_argument, "Name cannot be empty.");
    EXPECT_THROW_MSG(ZMutablePropertyHandle().setValue(1), std::runtime_error, emptyBasis);
    EXPECT_THROW_MSG(ZMutablePropertyTree::adopt(nullptr).handle().node(), std::runtime_error, emptyBasis);
    EXPECT_THROW_MSG(ZMutablePropertyTree::adopt(nullptr).setName("x"), std::runtime_error, emptyBasis);
    EXPECT_THROW_MSG(lost.access(), std::runtime_error, "Unable to resolve path: \"zz\" not found");
    EXPECT_THROW_MSG(lost.setChildValue("x", 1), std::runtime_error,
                     "Unable to resolve path: \"zz\" not found");
    EXPECT_THROW_MSG(ZMutablePropertyTree(root.basis()).handle({"z", "y"}), std::runtime_error,
                     "Unable to resolve path: \"y\" not found");
    EXPECT_THROW_MSG(root.child("a").child("A"), std::runtime_error, "Property \"A\" not found");
    EXPECT_THROW_MSG(root.parentPath(), std::runtime_error, "No path to parent");
    EXPECT_THROW_MSG(none.parentPath(), std::runtime_error, "No path to parent");
    EXPECT_EQ(none.childPath("x"), Path{"x"});
}

TEST(PropertyTree, a_version_takes_one_generation_and_shares_what_it_does_not_change) {
    const ZPropertyHandle first = sample();
    const ZPropertyHandle a = first.child("a");
    const ZPropertyHandle second = a.setChildValue("n", 5);
    const ZPropertyHandle third = a.removeChild("absent");
    EXPECT_EQ(first.node().generation(), 1u);
    EXPECT_EQ(rootOf(second).sharedNode()->generation(), 2u);
    EXPECT_EQ(rootOf(third).sharedNode()->generation(), 3u);
    EXPECT_EQ(second.node().generation(), 2u);
    EXPECT_EQ(second.child("n").sharedNode()->generation(), 2u);
    EXPECT_EQ(second.child("b").sharedNode(), a.child("b").sharedNode());
    EXPECT_EQ(rootOf(second).child("z").sharedNode(), first.child("z").sharedNode());
    EXPECT_EQ(second.path(), Path{"a"});
    EXPECT_EQ(second.getObjectType(), ZString("A"));
    EXPECT_FALSE(a.hasChild("n") || third.hasChild("n"));
    EXPECT_TRUE(rootOf(third).isEquivalentTo(first));
}

TEST(PropertyTree, rename) {
    const ZPropertyHandle root = sample();
    EXPECT_EQ(root.rename("other").getName(), ZString("other"));
    EXPECT_EQ(root.getName(), ZString("doc"));
    const ZPropertyHandle moved = root.child("a").rename("z");
    EXPECT_EQ(moved.path(), Path{"z"});
    EXPECT_EQ(moved.sharedNode(), root.child("a").sharedNode());
    EXPECT_EQ(rootOf(moved).childrenCopy().size(), 1u);
    const ZPropertyHandle removed = root.child("a").rename("a");
    EXPECT_FALSE(rootOf(removed).hasChild("a"));
    EXPECT_THROW_MSG(removed.access(), std::runtime_error, "Unable to resolve path: \"a\" not found");
    EXPECT_TRUE(root.hasChild("a"));
}

TEST(PropertyTree, equivalence_looks_at_values_and_names_alone) {
    const ZPropertyHandle root = sample();
    const ZPropertyHandle sameButForms =
        root.rename("x").changed([](ZMutablePropertyHandle& self) { self.setObjectType("T"); });
    EXPECT_TRUE(root.isEquivalentTo(sameButForms));
    EXPECT_TRUE(root.isEquivalentTo(root.setChildValue("z", 3.0)));
    EXPECT_FALSE(root.isEquivalentTo(root.setChildValue("z", 4)));
    EXPECT_FALSE(root.isEquivalentTo(rootOf(root.child("z").rename("y"))));
    EXPECT_FALSE(root.isEquivalentTo(root.removeChild("z")));
    EXPECT_FALSE(root.isEquivalentTo(rootOf(root.child("a").setChildValue("b", 9))));
    const ZPropertyHandle nan = root.setChildValue("n", std::numeric_limits<double>::quiet_NaN());
    EXPECT_FALSE(nan.isEquivalentTo(nan));
}

TEST(PropertyTree, iteration_yields_resolved_handles_and_keeps_the_version) {
    std::vector<std::string> seen;
    for (const ZPropertyHandle& child : sample().child("a").setChildValue("c", 3)) {
        seen.emplace_back(child.getName().data(), child.getName().size());
        EXPECT_EQ(child.path().size(), 2u);
        EXPECT_TRUE(reads(child, seen.size() == 1 ? 2 : 3));
    }
    EXPECT_EQ(seen, (std::vector<std::string>{"b", "c"}));
}

TEST(PropertyTree, trees_made_from_a_published_version_derive_from_it) {
    const ZPropertyHandle root = sample();
    ZPropertyHandle::BasisPointer basis = root.basis();
    const ZMutablePropertyTree fromMoved(std::move(basis));
    fromMoved.handle().setChildValue("new", 1);
    fromMoved.handle({"a"}).setValue(100);
    EXPECT_EQ(fromMoved.immutableHandle().sharedNode()->generation(), 2u);
    EXPECT_FALSE(root.hasChild("new"));
    EXPECT_TRUE(reads(root.child("a"), 1));

    auto own = std::make_shared<ZPropertyTreeBasis>("own");
    const ZPropertyHandle reader(own);
    const ZMutablePropertyTree adopted(std::move(own));
    adopted.handle().setValue(5);
    EXPECT_TRUE(reads(reader, 5));
    EXPECT_EQ(reader.node().generation(), 1u);
}

TEST(PropertyTree, with_mutation_returns_the_place_that_the_change_returns) {
    const ZPropertyHandle root = sample();
    const ZPropertyHandle b = ZPropertyHandle::withMutation(root.basis(), [](ZMutablePropertyTree& version) {
        version.handle({"a"}).getOrCreateChild("b").setChildValue("deep", 4);
        return version.handle({"a", "b"});
    });
    EXPECT_EQ(b.path(), (Path{"a", "b"}));
    EXPECT_TRUE(reads(b, 2));
    EXPECT_TRUE(reads(b.child("deep"), 4));
    EXPECT_FALSE(root.child("a").child("b").hasChild("deep"));
    const auto fails = [](ZMutablePropertyTree& version) -> ZMutablePropertyHandle {
        version.handle().setChildValue("half", 1);
        return version.handle({"absent"});
    };
    EXPECT_THROW_MSG(root.withMutation(root.basis(), fails), std::runtime_error,
                     "Unable to resolve path: \"absent\" not found");
    EXPECT_THROW_MSG(root.withMutation(nullptr, fails), std::runtime_error,
                     "Unable to resolve path: empty basis");
    EXPECT_FALSE(root.hasChild("half"));
}

TEST(PropertyTree, attached_nodes_are_shared_and_written_through_a_copy) {
    const ZPropertyHandle root = sample();
    ZMutablePropertyTree builder("host");
    ZMutablePropertyTree guest("guest");
    guest.handle().setObjectType("Guest");
    ZMutablePropertyHandle host = builder.handle();
    host.attachChild(root);
    host.attachChild(guest.handle());
    EXPECT_EQ(builder.immutableHandle().child("doc").sharedNode(), root.sharedNode());
    EXPECT_EQ(builder.immutableHandle().child("guest").getObjectType(), ZString("Guest"));
    host.attachChild("copy", root).setChildValue("z", 30);
    host.attachChild("own", host.addChildValue("first", 1)).setValue(2);
    EXPECT_TRUE(reads(root.child("z"), 3));
    EXPECT_TRUE(reads(builder.immutableHandle().child("copy").child("z"), 30));
    EXPECT_TRUE(reads(builder.immutableHandle().child("doc").child("z"), 3));
    EXPECT_TRUE(reads(builder.immutableHandle().child("first"), 2));
    host.eraseChild("doc");
    host.eraseChild("doc");
    EXPECT_FALSE(builder.immutableHandle().hasChild("doc"));
    EXPECT_TRUE(root.insertChild("self", root).child("self").hasChild("a"));
}

ZPropertyHandle chain(int length, int last) {
    const ZMutablePropertyTree tree("chain");
    std::shared_ptr<ZPropertyTreeNode> node = tree.handle().node().addChild("x");
    for (int i = 0; i < length; ++i) {
        if (i % 100 == 0) {
            node->addChild("leaf", i);
        }
        node = node->addChild("x");
    }
    node->setValue(last);
    return tree.immutableHandle();
}

TEST(PropertyTree, deep_trees_are_compared_and_destroyed_without_recursion) {
    constexpr int depth = 200000;
    ZPropertyHandle one = chain(depth, 1);
    const ZPropertyHandle two = chain(depth, 2);
    EXPECT_TRUE(one.isEquivalentTo(chain(depth, 1)));
    EXPECT_FALSE(one.isEquivalentTo(two));
    ZPropertyHandle wrapped = one.setChildValue("k", 1);
    one = ZPropertyHandle();
    EXPECT_TRUE(wrapped.hasChild("x"));
    wrapped = ZPropertyHandle();
}

TEST(PropertyTree, threads_read_one_handle_and_change_and_drop_their_own_versions) {
    const ZPropertyHandle shared = chain(500, 1).setChildValue("k", 0);
    std::vector<std::thread> threads;
    for (int id = 1; id <= 2; ++id) {
        threads.emplace_back([&shared, id] {
            ZPropertyHandle own = shared;
            for (int i = 0; i < 200; ++i) {
                own = own.setChildValue("k", id).insertChild("before", own);
                EXPECT_TRUE(reads(shared.child("k"), 0) && reads(own.child("k"), id));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_GE(shared.basis()->generations()->next(), 802u);
}

} // namespace
