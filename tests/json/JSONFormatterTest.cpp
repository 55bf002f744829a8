#include "RandomDocuments.h"

#include <zelm/json/JSONFormatter.h>

#include <support/ExpectThrow.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <locale>
#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>

using namespace Zelm;

namespace {

static_assert(std::is_move_constructible_v<JSONFormatter> && std::is_move_assignable_v<JSONFormatter>);
static_assert(!std::is_copy_constructible_v<JSONFormatter> && !std::is_polymorphic_v<JSONFormatter>);

const std::string kNoValue =
    "error parsing JSON: * Line 1, Column 1\n  Syntax error: value, object or array expected.\n";

std::string written(const ZPropertyHandle& tree) {
    std::ostringstream out;
    JSONFormatter().serialize(out, tree.getName(), tree);
    return out.str();
}

std::string rewritten(JSONFormatter& formatter, const std::string& document) {
    std::istringstream in(document);
    return written(formatter.deserialize(in));
}

TEST(JSONFormatter, documents_carry_the_name_given_at_saving) {
    JSONFormatter formatter;
    ZMutablePropertyTree tree("own");
    tree.handle().addChildValue("a", Variant()).setChildValue("x", true);
    const ZPropertyHandle root = tree.immutableHandle();
    const ZPropertyHandle a = root.child("a");
    const std::string x =
        R"("children":[{"name":"x","value":{"data":[true],"dataOrder":"rowMajor","dimensions":[1],)"
        R"("type":"Variant","wellKnownType":"bool"}}])";
    std::ostringstream out;
    formatter.serialize(out, "given", root);
    formatter.serialize(out, "", a);
    EXPECT_EQ(out.str(),
              "{\"children\":[{" + x + ",\"name\":\"a\"}],\"name\":\"given\"}\n{" + x + ",\"name\":\"\"}\n");
    EXPECT_EQ(root.getName(), "own");

    std::ostringstream nothing;
    EXPECT_THROW_MSG(formatter.serialize(nothing, "a", a), std::runtime_error,
                     "Unable to resolve path: \"a\" not found");
    EXPECT_THROW_MSG(formatter.serialize(nothing, "a", ZPropertyHandle()), std::runtime_error,
                     "Unable to resolve path: empty basis");
    EXPECT_THROW_MSG(formatter.WritePropertyTree(ZPropertyHandle()), std::runtime_error,
                     "Unable to resolve path: empty basis");
    EXPECT_EQ(nothing.str(), "");
}

TEST(JSONFormatter, comments_are_skipped_and_faults_named) {
    JSONFormatter formatter;
    EXPECT_EQ(rewritten(formatter,
                        "// one\n{ /* two */ \"name\" : \"\\u00b5\\ud83d\\ude00\" } // three\n trailing"),
              "{\"name\":\"\u00b5\U0001f600\"}\n");
    EXPECT_THROW_MSG(rewritten(formatter, ""), std::invalid_argument, kNoValue);
    EXPECT_THROW_MSG(rewritten(formatter, "{\"value\":{\n\"data\":[1e+9999]}}"), std::invalid_argument,
                     "error parsing JSON: * Line 2, Column 9\n  '1e+9999' is not a number.\n");
    EXPECT_THROW_MSG(rewritten(formatter, std::string(3000, '[')), Json::RuntimeError,
                     "Exceeded stackLimit in readValue().");
    EXPECT_EQ(rewritten(formatter, "{}"), "{\"name\":\"\"}\n");

    std::string large = "{\"children\":[\n";
    for (int i = 0; i < 20000; ++i) {
        large += "{\"name\":\"x\"},\n";
    }
    EXPECT_THROW_MSG(
        rewritten(formatter, large + "?"), std::invalid_argument,
        "error parsing JSON: * Line 20002, Column 1\n  Syntax error: value, object or array expected.\n");
    EXPECT_EQ(rewritten(formatter, large + "{}]}"),
              "{\"children\":[{\"name\":\"\"},{\"name\":\"x\"}],\"name\":\"\"}\n");
}

TEST(JSONFormatter, reads_any_stream_to_its_end) {
    JSONFormatter formatter;
    std::ifstream unopened;
    EXPECT_THROW_MSG(formatter.deserialize(unopened), std::invalid_argument, kNoValue);
    std::ifstream directory("/");
    ASSERT_TRUE(directory.is_open());
    EXPECT_THROW(formatter.deserialize(directory), std::ios_base::failure);
    std::istringstream twice("  {\"name\":\"a\"}");
    EXPECT_EQ(formatter.deserialize(twice).getName(), "a");
    EXPECT_TRUE(twice.eof() && !twice.fail());
    EXPECT_THROW_MSG(formatter.deserialize(twice), std::invalid_argument, kNoValue);
    JSONFormatter moved(std::move(formatter));
    moved = JSONFormatter();
    EXPECT_EQ(rewritten(moved, "{\"type\":\"T\"}"), "{\"name\":\"\",\"type\":\"T\"}\n");
}

TEST(JSONFormatter, own_file_is_only_opened_and_closed) {
    const std::string path = ::testing::TempDir() + "zelm_formatter.json";
    std::ofstream(path) << "content";
    JSONFormatter formatter;
    formatter.openForRead(path + ".missing");
    formatter.close();
    formatter.openForRead(path);
    EXPECT_EQ(rewritten(formatter, "{}"), "{\"name\":\"\"}\n");
    formatter.close();
    EXPECT_EQ(std::ifstream(path).peek(), 'c');
    formatter.openForWrite(path);
    formatter.close();
    EXPECT_EQ(std::ifstream(path).peek(), std::ifstream::traits_type::eof());
    EXPECT_FALSE(std::ifstream(path + ".missing").is_open());
    std::remove(path.c_str());
}

/// The decimal comma of most of Europe, without and with points between thousands.
struct DecimalComma : std::numpunct<char> {
    explicit DecimalComma(bool groups) : groups_(groups) {}
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return groups_ ? "\3" : ""; }
    bool groups_;
};

TEST(JSONFormatter, documents_do_not_depend_on_the_locale) {
    Testing::RandomDocuments random(Testing::RandomDocuments::Readable, 3);
    JSONFormatter formatter;
    const std::string value = R"({"name":"1.5\"","value":{"type":"Variant","wellKnownType":"double",
        "dataOrder":"rowMajor","dimensions":[9],"data":[0.5, // 0.5 "
        -2.50e3, /* 1.5 " */ 1.,12345.625E-2,1.5e-0400,1.5e-99999999999999999999,1e2,1234567890123456789012,
        0.1]}} // 2.5)";
    const std::string expected = rewritten(formatter, value);
    EXPECT_NE(expected.find("[0.5,-2500,1,123.45625,0,0,100,1.2345678901234568e+21,0.10000000000000001]"),
              std::string::npos);
    for (const bool groups : {false, true}) {
        const std::locale before = std::locale::global(std::locale(std::locale(), new DecimalComma(groups)));
        EXPECT_EQ(rewritten(formatter, value), expected);
        for (int i = 0; i < 50; ++i) {
            const std::string document = written(random.tree());
            EXPECT_EQ(rewritten(formatter, document), document);
        }
        for (const char* malformed :
             {"{\"a\":1.5e}", "{\"a\":1.5e+}", "{\"a\":1.2.3}", "{\"a\":1.5", "{\"a\":\"1.5", "/* 1.5",
              "{\"a\\", "{\"a\":1.5e99999999999999999999}"}) {
            EXPECT_THROW(rewritten(formatter, malformed), std::invalid_argument) << malformed;
        }
        std::locale::global(before);
    }
}

} // namespace
