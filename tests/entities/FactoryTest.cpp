#include <entities/Document.h>
#include <support/ExpectThrow.h>

#include <stdexcept>

using namespace Zelm;
using namespace Zelm::Testing;

namespace {

TEST(Factory, what_is_an_entity_and_what_cannot_be_made) {
    const ZEntityFactory& factory = ZEntityFactory::Instance();
    EXPECT_EQ(&factory, &ZSingleton<ZEntityFactory>::Instance());
    EXPECT_TRUE(factory.canMakeEntity(variable(1)) && factory.canMakeEntity(read(">[Alien]")));
    EXPECT_THROW_MSG(factory.canMakeEntity(read("[Alien]")), std::invalid_argument,
                     "Alien not registered in ZEntityFactory.");
    for (const std::string type : {"", "_Metadata", "Unit", "Alien"}) {
        EXPECT_FALSE(type != "Alien" && factory.canMakeEntity(read("[" + type + "]")));
        EXPECT_THROW_MSG(factory.createEntity("e", read("[" + type + "]")), std::runtime_error,
                         "Don't know how to construct a " + type);
        EXPECT_THROW_MSG(factory.createEntity("e", read(">[" + type + "]")), std::runtime_error,
                         "Don't know how to construct a link to " + type);
    }
    EXPECT_THROW_MSG(factory.createEntity("e", ZObserver()), std::runtime_error,
                     "Unable to determine type of observable.");
    EXPECT_TRUE(factory.createEntity("l", read(">1"))->isObserver());
    EXPECT_FALSE(factory.createEntity("v", variable(1))->isObserver());
}

TEST(Factory, a_maker_of_the_program_for_variables_lasts_until_the_next_construction) {
    std::string made;
    const auto maker = [&made, captured = std::string(40, 'x')](ZString name, ZGenericObject object) {
        auto entity = std::make_shared<ZVariableEntity>(name, ZVariable(object));
        made += captured.substr(39) + name.to_string();
        return entity;
    };
    auto& present = ZEntityFactory::Instance().entityMakers[ZVariable::objectType()];
    const ZGenericObject two = read("{a:1 b:2}");
    present = maker;
    DocumentEntity("root", two);
    EXPECT_EQ(made, "xa");
    present = maker;
    EXPECT_THROW_MSG(ZVariableEntity("", variable(1)), std::invalid_argument, "Unnamed ZEntity");
    DocumentEntity("root", two);
    EXPECT_EQ(made, "xa");
}

TEST(Factory, an_entity_keeps_the_range_it_was_made_with_until_its_next_state) {
    ZVariable both = variable(1);
    both.setDataAsRange(0, 5, 1, ZUnit());
    ZVariableEntity entity("v", both);
    EXPECT_EQ(entity.state().strategyVariableType(), "RangeVar");
    entity.updateState([](ZVariable*) {});
    EXPECT_EQ(entity.state().strategyVariableType(), "ExplVar");
    ZVariableEntity other("o", ZVariable(0, 5, 1, ZUnit()));
    other.updateState([](ZVariable*) {});
    other.onNext(both.propertyHandle().child("Data"), "Data");
    EXPECT_EQ(other.state().strategyVariableType(), "RangeVar");
    other.setState(other.genericState());
    EXPECT_EQ(other.state().strategyVariableType(), "ExplVar");
}

} // namespace
