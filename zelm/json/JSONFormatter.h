#pragma once

#include <zelm/Export.h>
#include <zelm/text/ZString.h>
#include <zelm/tree/ZPropertyTree.h>
#include <zelm/variant/Variant.h>

#include <json/json.h>

#include <fstream>
#include <iosfwd>
#include <string>

namespace Zelm {

/// Writes property trees, and with them all objects, as one line of JSON and reads them back.
///
/// A node becomes an object with the keys "children" (an array, in byte order of the names), "name", "type"
/// (unless empty) and "value" (unless it has no elements). A value becomes an object with "data",
/// "dataOrder", "dimensions", "type" ("Variant") and "wellKnownType". "data" lists the elements in logical
/// row-major order, whatever the ordering, while reading stores them flat: column-major arrays of two or more
/// long axes come back with their elements permuted, all others in place. A value without elements inside a
/// cell or a struct makes a document that cannot be read.
///
/// A formatter is used by one thread at a time.
class ZELM_EXPORT JSONFormatter {
public:
    JSONFormatter();
    JSONFormatter(JSONFormatter&&);
    JSONFormatter& operator=(JSONFormatter&&);
    ~JSONFormatter();

    /// Opens the formatter's own file; a failure shows in the state of that stream and is not reported.
    /// serialize() and deserialize() work on the caller's streams and do not use it.
    void openForRead(const std::string& path);
    void openForWrite(const std::string& path);
    void close();

    /// Writes the tree at `tree`, named `name`, and one line feed to `out`. The caller's tree keeps its name;
    /// a node below a root is renamed as ZPropertyHandle::rename() does it, so giving it the name that it has
    /// throws `std::runtime_error` `Unable to resolve path: "name" not found`. Nothing is written if anything
    /// is thrown.
    ///
    /// Text goes out as the bytes that it has. Numbers have 17 significant digits, so that they read back to
    /// the last bit, except that -0.0 loses its sign. A NaN is written as `null` and reads back as 0; an
    /// infinity is written as `1e+9999` and comes back. Trees of any depth are written, but only some 500
    /// levels can be read back. Throws `std::length_error` for cells and
    /// structs nested more than 1000 deep, and `std::out_of_range` "Offset out of bounds" for a value whose
    /// shape claims more elements than there are. Linear in nodes and elements.
    void serialize(std::ostream& out, ZString name, ZPropertyHandle tree);

    /// Reads one document, to the end of the stream, into a new tree, whatever the global locale's decimal
    /// point. Comments are skipped. Of several children of one name the last one stays. `1e+9999` and
    /// `-1e+9999` are infinities as elements of real or complex numbers, and malformed anywhere else.
    /// Documents in exactly the form of serialize() are read many times faster than all others, with no
    /// memory but for their text and the tree.
    ///
    /// Throws `std::invalid_argument` "error parsing JSON: " with the parser's messages, the failures of
    /// ReadVariant(), and jsoncpp's own exceptions, which derive from nothing but `std::exception`:
    /// `Json::RuntimeError` for documents nested too deeply, `Json::LogicError` for members of the wrong
    /// kind. A stream that is not good reads as an empty document, which is malformed; what its buffer throws
    /// goes through. Afterwards the formatter is as good as new.
    ZPropertyHandle deserialize(std::istream& in);

    /// The tree as a JSON value, for callers who embed it in a document of their own. Throws
    /// `std::length_error` beyond 10000 levels, which a `Json::Value` cannot be trusted to hold: it is copied
    /// and destroyed by recursion.
    Json::Value WritePropertyTree(ZPropertyHandle tree);
    /// The tree of a JSON value. Throws as deserialize().
    ZPropertyHandle ReadPropertyTree(Json::Value value);

    /// Throws `std::out_of_range` and `std::length_error` as serialize().
    Json::Value WriteVariant(Variant value);
    /// Throws `std::invalid_argument` "Expected variant not found" and `std::runtime_error` with one of
    /// - "wellKnownType key missing in conversion from JSON",
    /// - "wellKnownType: x is unknown in conversion from JSON",
    /// - "Missing dimensions key in conversion from JSON",
    /// - "dataOrder key missing in conversion from JSON",
    /// - "dataOrder value: x is not recognized in conversion from JSON",
    /// - "Variant dimensions less than actual data items in conversion from JSON";
    /// `std::length_error` for extents that are negative or whose product is out of range and for values
    /// nested more than 1000 deep; `Json::LogicError` for members of the wrong kind. An extent above 2^31-1
    /// is written but refused here. Fewer entries than elements leave the rest at their defaults.
    Variant ReadVariant(Json::Value value);

private:
    std::fstream stream_;
    Json::Reader reader_;
    // Documents are written straight from the nodes, in the form of this writer; it keeps its place in the
    // layout.
    Json::FastWriter writer_;
};

} // namespace Zelm
