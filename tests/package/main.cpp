// A program as a user of the installed library would write it.
#include <zelm/zelm.h>

#include <iostream>
#include <sstream>

int main() {
    using namespace Zelm;
    const ZVariable frequency(Variant(1.0), 3, Variant(0.5), ZUnit::FromSiString("GHz"));
    const ZVariable inHertz = frequency.convertToUnit(ZUnit::FromSiString("Hz"));

    JSONFormatter formatter;
    std::stringstream document;
    formatter.serialize(document, "frequency", inHertz);
    const ZVariable loaded(formatter.deserialize(document));

    const double last = loaded[2].value<double>();
    std::cout << "last frequency: " << last << " " << loaded.unitOfData().GetUnitsLabel() << '\n';
    return loaded.isEquivalentTo(frequency) && last == 2e9 ? 0 : 1;
}
