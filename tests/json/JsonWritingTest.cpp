#include "RandomDocuments.h"

#include <zelm/json/JSONFormatter.h>
#include <zelm/variant/MutableVariant.h>

#include <support/ExpectThrow.h>

#include <gtest/gtest.h>

#include <limits>
#include <sstream>
#include <stdexcept>
#include <string>

using namespace Zelm;

namespace {

std::string documentOf(const ZPropertyHandle& tree) {
    std::ostringstream out;
    JSONFormatter().serialize(out, tree.getName(), tree);
    return out.str();
}

/// The document of one unnamed node with this value, less what stands around the value.
std::string documentOf(const Variant& value) {
    ZMutablePropertyTree tree;
    tree.handle().setValue(value);
    const std::string document = documentOf(tree.immutableHandle());
    const std::string before = R"({"name":"","value":)";
    EXPECT_EQ(document.substr(0, before.size()), before);
    EXPECT_EQ(document.substr(document.size() - 2), "}\n");
    return document.substr(before.size(), document.size() - before.size() - 2);
}

std::string utf8(unsigned code) {
    std::string result;
    int shift = code < 0x800 ? 6 : code < 0x10000 ? 12 : 18;
    result += static_cast<char>((shift == 6 ? 0xC0 : shift == 12 ? 0xE0 : 0xF0) | code >> shift);
    while (shift > 0) {
        shift -= 6;
        result += static_cast<char>(0x80 | (code >> shift & 0x3F));
    }
    return result;
}

/// What Json::FastWriter writes, without the ".0" behind whole numbers and with UTF-8 for escapes from U+0080
/// up.
std::string fastWriter(const Json::Value& value) {
    const std::string text = Json::FastWriter().write(value);
    const auto unit = [&](std::size_t at) {
        return static_cast<unsigned>(std::stoul(text.substr(at + 2, 4), nullptr, 16));
    };
    std::string result;
    bool inString = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (!inString && text.compare(i, 2, ".0") == 0 &&
            std::string(",]}\n").find(text[i + 2]) != std::string::npos) {
            ++i;
        } else if (inString && text.compare(i, 2, "\\u") == 0 && unit(i) >= 0x80) {
            unsigned code = unit(i);
            i += 5;
            if (code >= 0xD800 && code < 0xDC00) {
                code = 0x10000 + ((code - 0xD800) << 10) + (unit(i + 1) - 0xDC00);
                i += 6;
            }
            result += utf8(code);
        } else {
            result += text[i];
            if (text[i] == '\\') {
                result += text[++i];
            } else if (text[i] == '"') {
                inString = !inString;
            }
        }
    }
    return result;
}

std::string valueText(const std::string& data, const std::string& shape, const std::string& type,
                      const std::string& order = "rowMajor") {
    return R"({"data":)" + data + R"(,"dataOrder":")" + order + R"(","dimensions":)" + shape +
           R"(,"type":"Variant","wellKnownType":")" + type + R"("})";
}

TEST(JsonWriting, text_is_that_of_the_fast_writer) {
    Testing::RandomDocuments random(Testing::RandomDocuments::Writable, 1);
    JSONFormatter formatter;
    std::size_t length = 0;
    for (int i = 0; i < 400; ++i) {
        const ZPropertyHandle tree = random.tree();
        const std::string document = documentOf(tree);
        ASSERT_EQ(document, fastWriter(formatter.WritePropertyTree(tree))) << "tree " << i;
        length += document.size();
    }
    EXPECT_GT(length, 400000u);
}

TEST(JsonWriting, every_element_type_has_its_form) {
    const double inf = std::numeric_limits<double>::infinity();
    Struct record;
    record.set("b", 1);
    record.set("a", "x");
    const std::string one = valueText("[1]", "[1]", "int32");
    const struct {
        Variant value;
        std::string data;
    } rows[] = {
        {{1.0, 0.1, -0.0, 1e15, 123456789012345678.0, 1e17, 5e-324, 0.0001, 0.00001},
         "[1,0.10000000000000001,-0,1000000000000000,1.2345678901234568e+17,1e+17,4.9406564584124654e-324,"
         "0.0001,1.0000000000000001e-05]"},
        {{9007199254740991.0, 9007199254740992.0, -12345678901234568.0, 99999999999999984.0},
         "[9007199254740991,9007199254740992,-12345678901234568,99999999999999984]"},
        {{std::nan(""), inf, -inf}, "[null,1e+9999,-1e+9999]"},
        {{0.1F, 2.0F}, "[0.10000000149011612,2]"},
        {{std::complex<double>(1, 2), std::complex<double>(3, -4)},
         R"([{"i":2,"real":1},{"i":-4,"real":3}])"},
        {Complex<bool>(false, true), R"([{"i":true,"real":false}])"},
        {Complex<unsigned char>(1, 255), R"([{"i":255,"real":1}])"},
        {{true, false}, "[true,false]"},
        {{static_cast<signed char>(-128), static_cast<signed char>(65)}, "[-128,65]"},
        {static_cast<unsigned short>(65535), "[65535]"},
        {std::numeric_limits<std::int64_t>::min(), "[-9223372036854775808]"},
        {std::numeric_limits<std::uint64_t>::max(), "[18446744073709551615]"},
        {std::string("\"\\/\b\f\n\r\t\x01\x1f\x7f\0\xc2\xb5\xff", 15),
         "[\"\\\"\\\\/\\b\\f\\n\\r\\t\\u0001\\u001f\x7f\\u0000\xc2\xb5\xff\"]"},
        {ZString("1.0,"), R"(["1.0,"])"},
        {{std::u16string(u"a\u00b5"), std::u16string()}, "[[97,181],null]"},
        {std::vector<Variant>{1, Variant()}, "[" + one + R"(,{"data":null,"type":"Variant"}])"},
        {{record, Struct()},
         R"([[{"name":"a","value":[)" + valueText(R"(["x"])", "[1]", "zstring") +
             R"(]},{"name":"b","value":[)" + one + "]}],null]"},
    };
    for (const auto& row : rows) {
        const std::string count = std::to_string(row.value.dimensions()[0]);
        EXPECT_EQ(documentOf(row.value),
                  valueText(row.data, "[" + count + "]", row.value.wellKnownType().ToString()));
    }
    EXPECT_EQ(documentOf(Variant({1.0, 2.0, 3.0, 4.0}, {2, 2})), valueText("[1,2,3,4]", "[2,2]", "double"));
}

TEST(JsonWriting, values_for_callers_keep_their_json_types) {
    const auto written = [](const Variant& value) { return JSONFormatter().WriteVariant(value); };
    EXPECT_EQ(written(2.0)["data"][0].type(), Json::realValue);
    EXPECT_EQ(written(2.0F)["data"][0].type(), Json::realValue);
    EXPECT_EQ(written(static_cast<unsigned short>(2))["data"][0].type(), Json::intValue);
    EXPECT_EQ(written(2U)["data"][0].type(), Json::uintValue);
    EXPECT_EQ(written(std::int64_t{2})["data"][0].type(), Json::intValue);
    EXPECT_EQ(written(2)["dimensions"][0].type(), Json::uintValue);
    EXPECT_EQ(written(Variant()).toStyledString(), "{\n\t\"data\" : null,\n\t\"type\" : \"Variant\"\n}\n");
}

TEST(JsonWriting, column_major_values_list_their_elements_row_by_row) {
    const Variant value({1, 4, 2, 5, 3, 6}, {2, 3}, ColumnMajor);
    EXPECT_EQ(documentOf(value), valueText("[1,2,3,4,5,6]", "[2,3]", "int32", "columnMajor"));
    JSONFormatter formatter;
    const Variant read = formatter.ReadVariant(formatter.WriteVariant(value));
    EXPECT_TRUE(read.isIdenticalTo(Variant({1, 2, 3, 4, 5, 6}, {2, 3}, ColumnMajor)));

    std::vector<int> layers(24);
    std::string expected;
    for (int i = 0; i < 24; ++i) {
        layers[static_cast<std::size_t>(i / 12 + i / 4 % 3 * 2 + i % 4 * 6)] = i;
        expected += (i ? "," : "[") + std::to_string(i);
    }
    EXPECT_EQ(documentOf(Variant(layers, {2, 3, 4}, ColumnMajor)),
              valueText(expected + "]", "[2,3,4]", "int32", "columnMajor"));
    EXPECT_EQ(documentOf(Variant({1, 2}, {1, 2, 1}, ColumnMajor)),
              valueText("[1,2]", "[1,2,1]", "int32", "columnMajor"));
}

TEST(JsonWriting, nodes_have_the_keys_that_they_need_and_children_stand_in_byte_order) {
    ZMutablePropertyTree tree("doc");
    ZMutablePropertyHandle root = tree.handle();
    root.setObjectType("Container");
    ZMutablePropertyHandle source = root.addChildValue("source", Variant());
    source.setObjectType("_Observer");
    ZMutablePropertyHandle metadata = source.addChildValue("__Metadata", Variant(std::vector<int>()));
    metadata.setObjectType("_Metadata");
    metadata.setChildValue("_type", "Variable");
    metadata.setChildValue("_path", "../x");
    source.addChildValue("Link", Variant()).setObjectType("Variable");
    ZMutablePropertyHandle scale = root.addChildValue("scale", Variant());
    scale.setObjectType("Unit");
    scale.setChildValue("Scale", 2.0);
    root.setChildValue("freq", 1000.0);
    EXPECT_EQ(
        documentOf(tree.immutableHandle()),
        R"({"children":[)"
        R"({"name":"freq","value":{"data":[1000],"dataOrder":"rowMajor","dimensions":[1],"type":"Variant","wellKnownType":"double"}},)"
        R"({"children":[{"name":"Scale","value":{"data":[2],"dataOrder":"rowMajor","dimensions":[1],"type":"Variant","wellKnownType":"double"}}],"name":"scale","type":"Unit"},)"
        R"({"children":[{"name":"Link","type":"Variable"},{"children":[)"
        R"({"name":"_path","value":{"data":["../x"],"dataOrder":"rowMajor","dimensions":[1],"type":"Variant","wellKnownType":"zstring"}},)"
        R"({"name":"_type","value":{"data":["Variable"],"dataOrder":"rowMajor","dimensions":[1],"type":"Variant","wellKnownType":"zstring"}}],)"
        R"("name":"__Metadata","type":"_Metadata"}],"name":"source","type":"_Observer"}],"name":"doc","type":"Container"})"
        "\n");
}

TEST(JsonWriting, a_shape_beyond_the_elements_is_refused) {
    Variant row({1, 2, 3, 4, 5}, {1, 5});
    row.append(Variant({6, 7, 8}, {1, 3}));
    ASSERT_EQ(row.dimensions().countAllElements(), 40u);
    EXPECT_THROW_MSG(JSONFormatter().WriteVariant(row), std::out_of_range, "Offset out of bounds");
    EXPECT_THROW_MSG(documentOf(row), std::out_of_range, "Offset out of bounds");
}

TEST(JsonWriting, depth_costs_no_stack_and_cells_have_a_limit) {
    ZMutablePropertyTree tree("0");
    ZMutablePropertyHandle root = tree.handle();
    ZPropertyTreeNode* node = &root.node();
    const auto deepen = [&node](int from, int to) {
        for (int level = from; level < to; ++level) {
            node = node->addChild(ZString(std::to_string(level))).get();
        }
    };
    deepen(1, 10000);
    const ZPropertyHandle limit = tree.immutableHandle();
    JSONFormatter formatter;
    EXPECT_TRUE(formatter.ReadPropertyTree(formatter.WritePropertyTree(limit)).isEquivalentTo(limit));
    deepen(10000, 10001);
    EXPECT_THROW_MSG(formatter.WritePropertyTree(limit), std::length_error,
                     "Values nested too deeply for JSON");
    deepen(10001, 200000);
    const std::string document = documentOf(limit);
    EXPECT_EQ(document.substr(0, 28), R"({"children":[{"children":[{")");
    EXPECT_EQ(document.substr(document.size() - 27), "],\"name\":\"1\"}],\"name\":\"0\"}\n");

    Variant nested = 1;
    for (int level = 0; level < 1000; ++level) {
        nested = Variant(std::vector<Variant>{nested});
    }
    Json::Value written = formatter.WriteVariant(nested);
    EXPECT_TRUE(formatter.ReadVariant(written).isIdenticalTo(nested));
    EXPECT_EQ(documentOf(nested) + "\n", fastWriter(written));
    const Variant wide = std::vector<Variant>(1001, 1);
    EXPECT_TRUE(formatter.ReadVariant(formatter.WriteVariant(wide)).isIdenticalTo(wide));
    Struct record;
    record.set("deeper", nested);
    EXPECT_THROW_MSG(documentOf(record), std::length_error, "Values nested too deeply for JSON");
    EXPECT_THROW_MSG(formatter.WriteVariant(record), std::length_error, "Values nested too deeply for JSON");
    Json::Value deeper = formatter.WriteVariant(std::vector<Variant>{1});
    deeper["data"][0] = written;
    EXPECT_THROW_MSG(formatter.ReadVariant(deeper), std::length_error, "Values nested too deeply for JSON");
}

} // namespace
