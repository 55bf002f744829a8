#include <entities/Document.h>

#include <stdexcept>

using namespace Zelm;
using namespace Zelm::Testing;

namespace {

TEST(Factory, what_is_an_entity_and_what_cannot_be_made) {
    EventLog log;
    const ZEntityFactory& factory = ZEntityFactory::Instance();
    EXPECT_EQ(&factory, &ZSingleton<ZEntityFactory>::Instance());
    for (const std::string type : {"", "_Metadata", "Unit", "Alien"}) {
        const ZGenericObject object = objectOf(type, {});
        log.expect({{type == "Alien" ? "invalid_argument: Alien not registered in ZEntityFactory." : "",
                     [&] { EXPECT_FALSE(factory.canMakeEntity(object)); }},
                    {"runtime_error: Don't know how to construct a " + type,
                     [&] { factory.createEntity("e", object); }},
                    {"runtime_error: Don't know how to construct a link to " + type,
                     [&] { factory.createEntity("e", link("", object)); }}});
        EXPECT_TRUE(factory.canMakeEntity(link("", object)) && factory.canMakeEntity(variable(1)));
    }
    log.expect({{"runtime_error: Unable to determine type of observable.",
                 [&] { factory.createEntity("e", ZObserver()); }}});
    EXPECT_TRUE(factory.createEntity("l", link("", variable(1)))->isObserver());
    EXPECT_EQ(factory.createEntity("v", variable(1))->getObjectType(), ZString("Variable"));
}

TEST(Factory, a_maker_of_the_program_for_variables_lasts_until_the_next_construction) {
    EventLog log;
    const auto replaceMaker = [&] {
        const auto maker = [&log, made = std::string(40, 'x')](ZString name, ZGenericObject object) {
            auto entity = std::make_shared<ZVariableEntity>(name, ZVariable(object));
            log.note(made.substr(39) + name.to_string());
            return entity;
        };
        ZEntityFactory::Instance().entityMakers[ZVariable::objectType()] = maker;
    };
    const ZGenericObject two = document({{"a", variable(1)}, {"b", variable(2)}});
    log.expect(
        {{"xa", [&] { replaceMaker(), DocumentEntity("root", two); }},
         {"invalid_argument: Unnamed ZEntity", [&] { replaceMaker(), ZVariableEntity("", variable(1)); }},
         {"", [&] { DocumentEntity("root", two); }}});
}

TEST(Factory, an_entity_keeps_the_range_it_was_made_with_until_its_next_state) {
    ZVariable both = variable(1), range(0, 5, 1, ZUnit());
    both.setDataAsRange(0, 5, 1, ZUnit());
    ZVariableEntity entity("v", both), other("o", range);
    EXPECT_EQ(entity.state().strategyVariableType(), "RangeVar");
    entity.updateState([](ZVariable*) {});
    other.updateState([](ZVariable*) {});
    other.onNext(both.propertyHandle().child("Data"), "Data");
    EXPECT_EQ(entity.state().strategyVariableType() + other.state().strategyVariableType(),
              "ExplVarRangeVar");
    other.setState(other.genericState());
    EXPECT_EQ(other.state().strategyVariableType(), "ExplVar");
}

} // namespace
