#include <entities/Document.h>
#include <support/ExpectThrow.h>

#include <gtest/gtest.h>

#include <stdexcept>

using namespace Zelm;
using namespace Zelm::Testing;

namespace {

TEST(Entity, who_publishes_and_how_often) {
    EventLog log;
    DocumentEntity root("root", document({{"a", document({{"b", variable(1)}})}}));
    const auto a = below<DocumentEntity>(root, "a");
    const auto b = below<ZVariableEntity>(root, "a/b");
    log.watch("a", *a);
    log.watch("root", root);
    b->updateState([](ZVariable* state) { *state = variable(2); });
    EXPECT_EQ(log.take(), "root {a:{b:2}} | a {b:2}");
}

} // namespace
