#pragma once

namespace Zelm {

/// The one object of its kind in the process, made on first use.
///
/// A class whose object library and application must share declares a specialisation of Instance() and
/// defines it in one source: an inline one would give each of them an object of its own.
template <class T>
class ZSingleton {
public:
    static T& Instance() {
        static T instance;
        return instance;
    }
};

} // namespace Zelm
