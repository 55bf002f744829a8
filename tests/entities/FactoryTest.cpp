#include <entities/Document.h>
#include <support/ExpectThrow.h>

#include <gtest/gtest.h>

#include <stdexcept>

using namespace Zelm;
using namespace Zelm::Testing;

namespace {

TEST(Factory, what_is_an_entity_and_what_cannot_be_made) {
    const ZEntityFactory& factory = ZEntityFactory::Instance();
    EXPECT_EQ(&factory, &ZSingleton<ZEntityFactory>::Instance());
    for (const ZString type : {"", "_Metadata", "Unit", "Variable", "_Observer"}) {
        const bool isEntity = type == ZString("Variable") || type == ZObserver::objectType();
        EXPECT_EQ(factory.canMakeEntity(objectOf(type, {})), isEntity);
    }
    EXPECT_THROW_MSG(factory.canMakeEntity(objectOf("Alien", {})), std::invalid_argument,
                     "Alien not registered in ZEntityFactory.");
    for (const ZString type : {"", "_Metadata", "Unit", "Alien"}) {
        EXPECT_THROW_MSG(factory.createEntity("e", objectOf(type, {})), std::runtime_error,
                         ("Don't know how to construct a " + type).to_string());
        EXPECT_THROW_MSG(factory.createEntity("e", link("", objectOf(type, {}))), std::runtime_error,
                         ("Don't know how to construct a link to " + type).to_string());
    }
    EXPECT_THROW_MSG(factory.createEntity("e", ZObserver()), std::runtime_error,
                     "Unable to determine type of observable.");
    EXPECT_THROW_MSG(factory.createEntity("", variable(1)), std::invalid_argument, "Unnamed ZEntity");
    EXPECT_TRUE(factory.createEntity("l", link("", variable(1)))->isObserver());
    EXPECT_EQ(factory.createEntity("v", variable(1))->getObjectType(), ZString("Variable"));
}

TEST(Factory, a_program_s_maker_of_variables_lasts_until_the_next_construction) {
    std::string made;
    const auto replaceMaker = [&] {
        ZEntityFactory::Instance().entityMakers["Variable"] =
            [&made, text = std::string(40, 'x')](ZString name, ZGenericObject object) {
                auto entity = std::make_shared<ZVariableEntity>(name, ZVariable(object));
                made += text.substr(39) + name.to_string() + " ";
                return entity;
            };
    };
    replaceMaker();
    DocumentEntity root("root", document({{"a", variable(1)}, {"b", variable(2)}}));
    EXPECT_EQ(made, "xa ");
    replaceMaker();
    EXPECT_THROW_MSG(ZVariableEntity("", variable(1)), std::invalid_argument, "Unnamed ZEntity");
    root.setState(document({{"c", variable(3)}}));
    EXPECT_EQ(made, "xa ");
}

TEST(Factory, an_entity_keeps_the_range_it_was_made_with_until_its_next_state) {
    ZVariable range(Variant(1), ZUnit());
    range.setDataAsRange(0, 5, 1, ZUnit());
    ZVariableEntity entity("v", range);
    EXPECT_EQ(entity.state().strategyVariableType(), ZString("RangeVar"));
    entity.updateState([](ZVariable*) {});
    EXPECT_EQ(entity.state().strategyVariableType(), ZString("ExplVar"));
}

} // namespace
