#include <zelm/json/JSONFormatter.h>

#include "RandomDocuments.h"

#include <support/ExpectThrow.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <fstream>
#include <locale>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

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
    RandomDocuments random(1);
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

TEST(JSONFormatter, every_byte_is_written_as_the_fast_writer_does_wherever_it_stands) {
    std::vector<std::string> texts;
    for (int byte = 0; byte < 256; ++byte) {
        for (std::size_t place = 0; place < 17; ++place) {
            texts.emplace_back(17, 'a').at(place) = static_cast<char>(byte);
        }
    }
    ZMutablePropertyTree tree;
    tree.handle().setValue(texts);
    const ZPropertyHandle handle = tree.immutableHandle();
    ASSERT_EQ(written(handle), fastWriter(JSONFormatter().WritePropertyTree(handle)));
}

/// Takes so many bytes, then fails: by throwing or by taking no more.
class LimitedBuffer : public std::streambuf {
public:
    LimitedBuffer(std::size_t room, bool throws) : room_(room), throws_(throws) {}
    const std::string& bytes() const { return bytes_; }

private:
    std::streamsize xsputn(const char* text, std::streamsize count) override {
        const std::size_t taken = std::min(static_cast<std::size_t>(count), room_ - bytes_.size());
        bytes_.append(text, taken);
        if (throws_ && taken < static_cast<std::size_t>(count)) {
            throw std::range_error("full");
        }
        return static_cast<std::streamsize>(taken);
    }
    int_type overflow(int_type byte) override {
        const char text = traits_type::to_char_type(byte);
        return xsputn(&text, 1) == 1 ? byte : traits_type::eof();
    }

    std::size_t room_;
    bool throws_;
    std::string bytes_;
};

/// All that can be seen of a stream after something was inserted into it.
template <class Insert>
std::string seen(std::uint64_t choices, std::size_t size, const Insert& insert) {
    const auto pick = [&choices](std::uint64_t count) {
        return std::exchange(choices, choices / count) % count;
    };
    LimitedBuffer buffer(pick(4) * size / 2, pick(2));
    std::ostream out(&buffer);
    const auto stateBefore = std::array{out.goodbit, out.badbit, out.failbit, out.eofbit}[pick(4)];
    out.clear(stateBefore);
    out.width(static_cast<std::streamsize>(std::array{std::size_t{0}, size - 1, size + 50}[pick(3)]));
    out << (pick(2) ? std::left : std::right);
    std::string fault;
    try {
        out.exceptions(pick(2) ? out.badbit : out.goodbit);
        insert(out);
    } catch (const std::range_error&) {
        fault = "buffer";
    } catch (const std::ios_base::failure&) {
        fault = "stream";
    }
    return fault + std::to_string(out.rdstate()) + ' ' + std::to_string(out.width()) + ' ' + buffer.bytes();
}

TEST(JSONFormatter, a_stream_takes_a_document_as_it_takes_a_string) {
    for (const std::size_t count : {1U, 1000U, 30000U}) {
        ZMutablePropertyTree tree("x");
        tree.handle().setValue(std::vector<std::string>{std::string(count, 'a'), std::string(count, 'b')});
        tree.handle().addChildValue("c", std::vector<int>(count, 1));
        const ZPropertyHandle handle = tree.immutableHandle();
        const std::string document = written(handle);
        for (std::uint64_t choices = 0; choices < 4 * 2 * 4 * 3 * 2 * 2; ++choices) {
            ASSERT_EQ(seen(choices, document.size(),
                           [&](std::ostream& out) { JSONFormatter().serialize(out, "x", handle); }),
                      seen(choices, document.size(), [&](std::ostream& out) { out << document; }));
        }
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
    EXPECT_THROW_MSG(read("{\"value\":{\n\"data\":[1e+9999,}]}}"), std::invalid_argument,
                     "error parsing JSON: * Line 2, Column 17\n"
                     "  Syntax error: value, object or array expected.\n");
    EXPECT_THROW_MSG(read(std::string(3000, '[')), Json::RuntimeError, "Exceeded stackLimit in readValue().");
}

TEST(JSONFormatter, infinities_are_read_as_real_numbers_and_as_nothing_else) {
    const double infinity = HUGE_VAL;
    const ZMutablePropertyTree tree("1e+9999");
    tree.handle().addChildValue("double", std::vector<double>{infinity, 1, -infinity});
    tree.handle().addChildValue("float", std::vector<float>{HUGE_VALF, 1, -HUGE_VALF});
    tree.handle().addChildValue("complex", std::complex<double>(-infinity, infinity));
    tree.handle().addChildValue("complexFloat", std::complex<float>(1, -HUGE_VALF));
    const std::string document = written(tree.immutableHandle());
    EXPECT_EQ(written(read(document)), document);
    EXPECT_EQ(written(read("/*\n\"1e+9999*/" + document)), document);

    const std::string value = R"(,"dataOrder":"rowMajor","dimensions":[1],"type":"Variant","wellKnownType":)";
    for (const std::string& malformed : {
             R"({"value":{"data":[1e+9999])" + value + "\"int32\"}}",
             R"({"value":{"data":[1e+0000],"data":[1e+9999])" + value + "\"bool\"}}",
             R"({"value":{"data":[1e+9999],"data":[1.0])" + value + "\"double\"}}",
             R"({"value":{"data":[1e+9999])" + value + "\"string\"}}",
             std::string("{\"name\":1e+9999}"),
         }) {
        const std::string column = std::to_string(malformed.find("1e+9999") + 1);
        EXPECT_THROW_MSG(read("\n" + malformed), std::invalid_argument,
                         "error parsing JSON: * Line 2, Column " + column +
                             "\n  '1e+9999' is not a number.\n");
    }
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
