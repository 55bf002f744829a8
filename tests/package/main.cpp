// A program as a user of the installed library would write it.
#include <zelm/entities/ZEntityImpl.h>
#include <zelm/zelm.h>

#include <iostream>
#include <sstream>

namespace {

using namespace Zelm;

class Note : public ZObject {
public:
    static ZString objectType() { return "Note"; }
    Note() : ZObject(objectType()) {}
    Note(ZGenericObject object) : ZObject(std::move(object), objectType()) {}
};

class NoteEntity : public ZEntity<NoteEntity, Note> {
public:
    NoteEntity(ZString name, Note state) : ZEntity(std::move(name), std::move(state)) {}
};

bool documentSurvives() {
    const ZVariable frequency(Variant(1.0), 3, Variant(0.5), ZUnit::FromSiString("GHz"));
    const ZVariable inHertz = frequency.convertToUnit(ZUnit::FromSiString("Hz"));

    JSONFormatter formatter;
    std::stringstream document;
    formatter.serialize(document, "frequency", inHertz);
    const ZVariable loaded(formatter.deserialize(document));

    const double last = loaded[2].value<double>();
    std::cout << "last frequency: " << last << " " << loaded.unitOfData().GetUnitsLabel() << '\n';
    return loaded.isEquivalentTo(frequency) && last == 2e9;
}

/// The library, asked for the children of one of its own entities, finds what this program has registered:
/// both have the same factory.
bool libraryMakesEntitiesOfThisProgram() {
    NoteEntity::registerEntityType();
    const ZVariable frequency(Variant(1.0), ZUnit::FromSiString("GHz"));
    const ZGenericObject state = frequency.propertyHandle().insertChild("note", Note().propertyHandle());
    ZVariableEntity entity("frequency", ZVariable(state));

    int notified = 0;
    entity.stream().subscribe([&](const ZGenericObject&) { ++notified; });
    const auto note = entity.child<NoteEntity>("note");
    if (note) {
        note->updateState([](Note*) {});
    }
    std::cout << "notified: " << notified << '\n';
    return note && notified == 1;
}

} // namespace

int main() {
    return documentSurvives() && libraryMakesEntitiesOfThisProgram() ? 0 : 1;
}
