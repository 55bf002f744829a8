#include <zelm/variables/ZVariableIterator.h>

#include <zelm/variables/ZVariable.h>

namespace Zelm {

ZVariableIteratorBase ZVariableIteratorBase::operator++(int) {
    const ZVariableIteratorBase before = *this;
    ++position_;
    return before;
}

ZVariableIteratorBase ZVariableIteratorBase::operator++() {
    ++position_;
    return *this;
}

const Variant ZVariableIterator::operator*() const {
    return (*variable_)[position_];
}

} // namespace Zelm
