#include <zelm/tree/ZPropertyTree.h>

#include <support/ExpectThrow.h>

#include <gtest/gtest.h>

#include <functional>
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
    ZMutablePropertyHandle a = tree.handle().addChildValue("a", 1);
    a.setObjectType("A");
    a.addChildValue("b", 2);
    tree.handle().setChildValue("z", 3);
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
    const ZPropertyHandle none;
    const ZPropertyHandle root = sample();
    const ZPropertyHandle lost(root.basis(), Path{"a", "zz", "c"});
    const std::vector<std::function<void()>> withoutTree{
        [&] { none.access(); },
        [&] { none.getName(); },
        [&] { none.child("a"); },
        [&] { none.begin(); },
        [&] { none.rename("x"); },
        [&] { none.setChildValue("x", 1); },
        [&] { none.insertChild("x", root); },
        [&] { root.insertChild("x", none); },
        [&] { root.isEquivalentTo(none); },
        [&] { root.withMutation(nullptr, nullptr); },
        [&] { ZMutablePropertyHandle().setValue(1); },
        [&] { ZMutablePropertyTree::adopt(nullptr).handle().node(); },
        [&] { ZMutablePropertyTree::adopt(nullptr).setName("x"); },
    };
    for (const auto& call : withoutTree) {
        EXPECT_THROW_MSG(call(), std::runtime_error, "Unable to resolve path: empty basis");
    }
    const std::string unresolved = "Unable to resolve path: \"zz\" not found";
    EXPECT_THROW_MSG(lost.access(), std::runtime_error, unresolved);
    EXPECT_THROW_MSG(lost.setChildValue("x", 1), std::runtime_error, unresolved);
    EXPECT_THROW_MSG(root.insertChild("", none), std::invalid_argument, "Name cannot be empty.");
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
    EXPECT_EQ(second.child("n").sharedNode()->generation(), 2u);
    EXPECT_EQ(second.child("b").sharedNode(), a.child("b").sharedNode());
    EXPECT_EQ(rootOf(second).child("z").sharedNode(), first.child("z").sharedNode());
    EXPECT_EQ(second.path(), Path{"a"});
    EXPECT_FALSE(a.hasChild("n"));

    const ZPropertyHandle moved = a.rename("z");
    EXPECT_EQ(moved.path(), Path{"z"});
    EXPECT_EQ(moved.sharedNode(), a.sharedNode());
    const ZPropertyHandle removed = a.rename("a");
    EXPECT_FALSE(rootOf(removed).hasChild("a"));
    EXPECT_THROW_MSG(removed.access(), std::runtime_error, "Unable to resolve path: \"a\" not found");
}

TEST(PropertyTree, equivalence_looks_at_values_and_names_alone) {
    const ZPropertyHandle root = sample();
    const auto retype = [](ZMutablePropertyHandle& self) { self.setObjectType("T"); };
    EXPECT_TRUE(root.isEquivalentTo(root.rename("x").changed(retype).setChildValue("z", 3.0)));
    for (const ZPropertyHandle& other :
         {root.setChildValue("z", 4), root.child("z").rename("y"), root.removeChild("z"),
          root.child("a").setChildValue("b", 9), root.child("a").removeChild("b")}) {
        EXPECT_FALSE(root.isEquivalentTo(rootOf(other)));
    }
    const ZPropertyHandle nan = root.setChildValue("n", std::numeric_limits<double>::quiet_NaN());
    EXPECT_FALSE(nan.isEquivalentTo(nan));
}

TEST(PropertyTree, iteration_yields_resolved_handles_and_keeps_the_version) {
    int value = 2;
    for (const ZPropertyHandle& child : sample().child("a").setChildValue("c", 3)) {
        EXPECT_EQ(child.path(), (Path{"a", value == 2 ? "b" : "c"}));
        EXPECT_TRUE(reads(child, value++));
    }
    EXPECT_EQ(value, 4);
}

TEST(PropertyTree, trees_made_from_a_published_version_derive_from_it) {
    const ZPropertyHandle root = sample();
    ZPropertyHandle::BasisPointer basis = root.basis();
    const ZMutablePropertyTree fromMoved(std::move(basis));
    fromMoved.handle({"a"}).setValue(100);
    EXPECT_EQ(fromMoved.immutableHandle().sharedNode()->generation(), 2u);
    EXPECT_TRUE(reads(root.child("a"), 1));

    auto own = std::make_shared<ZPropertyTreeBasis>("own");
    const ZPropertyHandle reader(own);
    ZMutablePropertyTree(std::move(own)).handle().setValue(5);
    EXPECT_TRUE(reads(reader, 5) && reader.node().generation() == 1);
}

TEST(PropertyTree, with_mutation_returns_the_place_that_the_change_returns) {
    const ZPropertyHandle root = sample();
    const auto change = [](ZMutablePropertyTree& version) {
        version.handle({"a"}).getOrCreateChild("b").setChildValue("deep", 4);
        return version.handle({"a", "b"});
    };
    const ZPropertyHandle b = ZPropertyHandle::withMutation(root.basis(), change);
    EXPECT_EQ(b.path(), (Path{"a", "b"}));
    EXPECT_TRUE(reads(b, 2) && reads(b.child("deep"), 4));
    EXPECT_FALSE(root.child("a").child("b").hasChild("deep"));
}

TEST(PropertyTree, attached_nodes_are_shared_and_written_through_a_copy) {
    const ZPropertyHandle root = sample();
    const ZMutablePropertyTree builder("host"), guest("guest");
    ZMutablePropertyHandle host = builder.handle();
    host.attachChild(root);
    host.attachChild(guest.handle());
    host.attachChild("copy", root).setChildValue("z", 30);
    host.attachChild("own", host.addChildValue("first", 1)).setValue(2);
    const ZPropertyHandle built = builder.immutableHandle();
    EXPECT_EQ(built.child("doc").sharedNode(), root.sharedNode());
    EXPECT_EQ(built.child("guest").sharedNode(), guest.immutableHandle().sharedNode());
    EXPECT_TRUE(reads(root.child("z"), 3) && reads(built.child("copy").child("z"), 30));
    EXPECT_TRUE(reads(built.child("first"), 2));
}

/// A chain of nodes, each of which is the child of the one before, or two children of it.
std::shared_ptr<const ZPropertyTreeNode> chain(int last, bool twice = false) {
    const Private::ZPropertyVersion version{1, 0};
    auto node = std::make_shared<ZPropertyTreeNode>(version, last);
    for (int depth = 0; depth < 100000; ++depth) {
        auto parent = std::make_shared<ZPropertyTreeNode>(version);
        parent->attachChild("x", node);
        if (twice) {
            parent->attachChild("y", node);
        }
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
    const ZPropertyHandle shared = sample();
    std::vector<std::thread> threads;
    for (int id = 1; id <= 2; ++id) {
        threads.emplace_back([&shared, id] {
            ZPropertyHandle own = shared;
            for (int i = 0; i < 200; ++i) {
                own = own.setChildValue("k", id).insertChild("before", own);
                EXPECT_TRUE(reads(shared.child("z"), 3) && reads(own.child("k"), id));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(shared.basis()->generations()->next(), 802u);
}

} // namespace
