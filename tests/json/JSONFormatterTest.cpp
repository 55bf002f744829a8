#include <zelm/json/JSONFormatter.h>
#include <zelm/variant/MutableVariant.h>
#include <zelm/variant/Struct.h>
#include <zelm/variant/VariantAccess.h>

#include <support/ExpectThrow.h>

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <limits>
#include <locale>
#include <random>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <string>

using namespace Zelm;

namespace {

const std::string kTooDeep = "Values nested too deeply for JSON";

std::string written(const ZPropertyHandle& tree) {
    std::ostringstream out;
    JSONFormatter().serialize(out, tree.getName(), tree);
    return out.str();
}

std::string written(const Variant& value) {
    ZMutablePropertyTree tree;
    tree.handle().setValue(value);
    return written(tree.immutableHandle());
}

ZPropertyHandle read(const std::string& document) {
    std::istringstream in(document);
    return JSONFormatter().deserialize(in);
}

/// Random trees with values of all 27 element types that come back as they were.
class RandomDocuments {
public:
    ZPropertyHandle tree() {
        const ZMutablePropertyTree result(text());
        fill(result.handle().node(), 0);
        return result.immutableHandle();
    }

private:
    Variant value(int depth) {
        static constexpr WellKnownType kTypes[] = {
#define ZELM_TYPE(type, Name, value, keyword) WellKnownType::Name(),
            ZELM_FOR_EACH_ELEMENT_TYPE(ZELM_TYPE)
#undef ZELM_TYPE
        };
        Variant result;
        details::visitElementType(kTypes[pick(std::size(kTypes))], [&](auto tag) {
            using T = typename decltype(tag)::type;
            const ArrayDimensions shape(std::vector<std::uint64_t>{1 + pick(3), 1 + pick(2) * pick(2)});
            std::vector<details::StoredElement<T>> elements(shape.countAllElements());
            for (auto& place : elements) {
                place = element<T>(depth);
            }
            result = details::VariantAccess::make<T>(std::move(elements), shape,
                                                     shape.isVector() && pick(2) ? ColumnMajor : RowMajor);
        });
        return result;
    }

    std::uint64_t pick(std::uint64_t count) {
        return random_() % count;
    }

    /// Any cut, also through a character.
    std::string text() {
        static const std::string kAll("a1.0,[1.0]\\u00b5\"\\/\n\0\x01\x1f\x7f\u00b5\uffff\U0001f600\xff", 34);
        return kAll.substr(pick(kAll.size()), pick(2) * pick(9));
    }

    void fill(ZPropertyTreeNode& node, int depth) {
        node.setObjectType(text());
        node.setValue(pick(3) ? value(0) : Variant());
        for (std::uint64_t children = depth < 4 ? pick(4) : 0; children > 0; --children) {
            fill(*node.addChild(text()), depth + 1);
        }
    }

    template <class T>
    T element([[maybe_unused]] int depth) {
        if constexpr (std::is_same_v<T, Variant>) {
            return depth < 3 ? value(depth + 1) : Variant(1);
        } else if constexpr (std::is_same_v<T, Struct>) {
            Struct record;
            record.set(text(), element<Variant>(depth));
            return record;
        } else if constexpr (std::is_same_v<T, std::u16string>) {
            return std::u16string(pick(3), static_cast<char16_t>(random_()));
        } else if constexpr (details::isTextElement<T>) {
            return text();
        } else if constexpr (details::isComplexElement<T>) {
            return T(element<details::RealPartOf<T>>(depth), element<details::RealPartOf<T>>(depth));
        } else if constexpr (std::is_floating_point_v<T>) {
            // Of all sizes, from the subnormal ones up, but for the zero that loses its sign.
            constexpr int kLimit = std::numeric_limits<T>::max_exponent;
            const int exponent = pick(2) ? static_cast<int>(pick(2 * kLimit - 64)) - kLimit : 0;
            return std::ldexp(static_cast<T>(element<std::int64_t>(depth)), exponent) + T(0);
        } else {
            return static_cast<T>(static_cast<std::int64_t>(random_()) >> pick(64));
        }
    }

    std::mt19937_64 random_{1};
};

/// What Json::FastWriter writes, without the ".0" behind whole numbers and with text as it is.
std::string fastWriter(const Json::Value& json) {
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    EXPECT_EQ(Json::writeString(builder, json) + '\n', Json::FastWriter().write(json));
    builder["emitUTF8"] = true;
    const std::regex stringOrZero(R"-(("(?:[^"\\]|\\.)*")|\.0(?=[,\]}]))-");
    return std::regex_replace(Json::writeString(builder, json) + '\n', stringOrZero, "$1");
}

TEST(JSONFormatter, text_is_that_of_the_fast_writer_and_comes_back_to_the_last_byte) {
    RandomDocuments random;
    for (int i = 0; i < 150; ++i) {
        const ZPropertyHandle tree = random.tree();
        const std::string document = written(tree);
        const Json::Value json = JSONFormatter().WritePropertyTree(tree);
        ASSERT_EQ(document, fastWriter(json));
        ASSERT_EQ(written(JSONFormatter().ReadPropertyTree(json)), document);
        ASSERT_EQ(written(read(document)), document);
        ASSERT_TRUE(read(document).isEquivalentTo(tree)) << document;
    }
}

/// The decimal comma of most of Europe.
struct DecimalComma : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
};

TEST(JSONFormatter, documents_do_not_depend_on_the_locale) {
    const std::string numbers = R"({"name":"1.5\"","value":{"type":"Variant","wellKnownType":"double",
        "dataOrder":"rowMajor","dimensions":[9],"data":[0.5, // 0.5 "
        -2.50e3, /* 1.5 " */ 1.,12.625E-2,1.5e-0400,1.5e-99999999999999999999,1e2,1234567890123456789012,
        // 1.5)"
                                "\r1.125]}} // 2.5";
    const std::string expected = written(read(numbers));
    const std::locale before = std::locale::global(std::locale(std::locale(), new DecimalComma));
    EXPECT_EQ(written(read(numbers)), expected);
    EXPECT_THROW(read("[1.5e+]"), std::invalid_argument);
    std::locale::global(before);
}

TEST(JSONFormatter, elements_have_their_forms_row_by_row) {
    const std::pair<Variant, std::string> rows[] = {
        {std::vector<double>{1, -0.0, 1e17, 9007199254740993.0, 0.1F, NAN, HUGE_VAL, -HUGE_VAL},
         "[1,-0,1e+17,9007199254740992,0.10000000149011612,null,1e+9999,-1e+9999]"},
        {std::string("\"\\/\b\f\n\r\t\x01\x1f\x7f\0\xc2\xb5\xff", 15),
         "[\"\\\"\\\\/\\b\\f\\n\\r\\t\\u0001\\u001f\x7f\\u0000\xc2\xb5\xff\"]"},
        {Variant({1, 4, 2, 5, 3, 6}, {2, 3}, ColumnMajor), "[1,2,3,4,5,6]"},
        {Variant({1, 5, 3, 7, 2, 6, 4, 8}, {2, 2, 2}, ColumnMajor), "[1,2,3,4,5,6,7,8]"},
    };
    for (const auto& [value, data] : rows) {
        const std::string start = R"({"name":"","value":{"data":)" + data + R"(,"dataOrder":)";
        EXPECT_EQ(written(value).substr(0, start.size()), start);
    }
    Variant grown({1, 2, 3, 4, 5}, {1, 5});
    grown.append(Variant({6, 7, 8}, {1, 3}));
    EXPECT_THROW_MSG(written(grown), std::out_of_range, "Offset out of bounds");
}

TEST(JSONFormatter, documents_carry_the_name_given_at_saving) {
    const ZMutablePropertyTree tree("own");
    ZMutablePropertyHandle a = tree.handle().addChildValue("a", Variant());
    a.setObjectType("T");
    a.addChildValue("__x", Variant(std::vector<int>()));
    a.addChildValue("X", 2.0);
    const ZPropertyHandle root = tree.immutableHandle();
    const std::string inner =
        R"({"children":[{"name":"X","value":{"data":[2],"dataOrder":"rowMajor","dimensions":[1],)"
        R"("type":"Variant","wellKnownType":"double"}},{"name":"__x"}],"name":)";
    std::ostringstream out;
    JSONFormatter().serialize(out, "given", root);
    JSONFormatter().serialize(out, "", root.child("a"));
    EXPECT_THROW_MSG(JSONFormatter().serialize(out, "a", root.child("a")), std::runtime_error,
                     "Unable to resolve path: \"a\" not found");
    EXPECT_EQ(out.str(), "{\"children\":[" + inner + "\"a\",\"type\":\"T\"}],\"name\":\"given\"}\n" + inner +
                             "\"\",\"type\":\"T\"}\n");
}

TEST(JSONFormatter, streams_are_read_to_their_end_and_faults_named) {
    std::istringstream twice(std::string(100000, ' ') + "// 1\n{ /* 2 */ \"name\" : \"x\" } // 3\n trailing");
    JSONFormatter formatter;
    EXPECT_EQ(formatter.deserialize(twice).getName(), "x");
    EXPECT_THROW(formatter.deserialize(twice), std::invalid_argument);
    EXPECT_THROW_MSG(read("{\"value\":{\n\"data\":[1e+9999]}}"), std::invalid_argument,
                     "error parsing JSON: * Line 2, Column 9\n  '1e+9999' is not a number.\n");
    EXPECT_THROW_MSG(read(std::string(3000, '[')), Json::RuntimeError, "Exceeded stackLimit in readValue().");
}

TEST(JSONFormatter, opens_a_file_of_its_own) {
    const std::string path = ::testing::TempDir() + "zelm_formatter.json";
    std::ofstream(path) << "content";
    JSONFormatter formatter;
    formatter.openForRead(path);
    EXPECT_EQ(std::ifstream(path).peek(), 'c');
    formatter.close();
    formatter.openForWrite(path);
    EXPECT_EQ(std::ifstream(path).peek(), std::ifstream::traits_type::eof());
}

TEST(JSONFormatter, depth_costs_no_stack_and_cells_have_a_limit) {
    JSONFormatter formatter;
    const ZMutablePropertyTree tree("x");
    ZPropertyTreeNode* node = &tree.handle().node();
    const auto deepen = [&node](int levels) {
        for (int level = 0; level < levels; ++level) {
            node = node->addChild("x").get();
        }
    };
    deepen(9999);
    const ZPropertyHandle deep = tree.immutableHandle();
    EXPECT_TRUE(formatter.ReadPropertyTree(formatter.WritePropertyTree(deep)).isEquivalentTo(deep));
    deepen(190001);
    EXPECT_THROW_MSG(formatter.WritePropertyTree(deep), std::length_error, kTooDeep);
    EXPECT_EQ(written(deep).size(), 200000 * 26u + 13u);

    Variant cell = std::vector<Variant>(1001, 1);
    for (int level = 1; level < 1000; ++level) {
        cell = Variant(std::vector<Variant>{cell});
    }
    const Json::Value json = formatter.WriteVariant(cell);
    EXPECT_TRUE(formatter.ReadVariant(json).isIdenticalTo(cell));
    EXPECT_THROW_MSG(formatter.WriteVariant(std::vector<Variant>{cell}), std::length_error, kTooDeep);
    Json::Value deeper = formatter.WriteVariant(std::vector<Variant>{1});
    deeper["data"][0] = json;
    EXPECT_THROW_MSG(formatter.ReadVariant(deeper), std::length_error, kTooDeep);
}

} // namespace
