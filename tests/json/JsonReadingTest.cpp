#include "RandomDocuments.h"

#include <zelm/json/JSONFormatter.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <cxxabi.h>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>

using namespace Zelm;

namespace {

std::string replaced(std::string text, const std::string& from, const std::string& to) {
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
    return text;
}

/// JSON text in short: `'` for a quotation mark, `$1` and `$2` for the values 1 and 2.
std::string spelledOut(std::string text) {
    for (const std::string digit : {"1", "2"}) {
        text = replaced(
            text, "$" + digit,
            "{'data':[" + digit +
                "],'dataOrder':'rowMajor','dimensions':[1],'type':'Variant','wellKnownType':'int32'}");
    }
    return replaced(text, "'", "\"");
}

/// What `read` makes of a JSON text, or the exact type and the text of the exception.
template <class Read>
std::string outcome(const std::string& text, Read&& read) {
    Json::Value json;
    EXPECT_TRUE(Json::Reader().parse(text, json)) << text;
    try {
        std::string written = Json::FastWriter().write(read(json));
        written.pop_back();
        return written;
    } catch (const std::exception& error) {
        const std::unique_ptr<char, void (*)(void*)> name(
            abi::__cxa_demangle(typeid(error).name(), nullptr, nullptr, nullptr), std::free);
        return std::string(name.get()) + ": " + error.what();
    }
}

/// Reads the rows of a table, each `text => outcome`.
template <class Read>
void expectOutcomes(const std::string& table, Read&& read) {
    std::istringstream lines(table.substr(1));
    for (std::string line; std::getline(lines, line);) {
        const std::size_t arrow = line.find(" => ");
        ASSERT_NE(arrow, std::string::npos) << line;
        EXPECT_EQ(read(spelledOut(line.substr(0, arrow))), spelledOut(line.substr(arrow + 4))) << line;
    }
}

Json::Value reread(const Json::Value& value) {
    JSONFormatter formatter;
    return formatter.WriteVariant(formatter.ReadVariant(value));
}

TEST(JsonReading, values_are_tested_in_order) {
    expectOutcomes(R"(
null => std::invalid_argument: Expected variant not found
[] => Json::LogicError: in Json::Value::resolveReference(key, end): requires objectValue
'Variant' => Json::LogicError: in Json::Value::resolveReference(key, end): requires objectValue
{'type':'variant'} => std::invalid_argument: Expected variant not found
{'type':['Variant']} => std::invalid_argument: Expected variant not found
{'type':'Variant','data':null} => std::runtime_error: wellKnownType key missing in conversion from JSON
{'type':'Variant','wellKnownType':'Double'} => std::runtime_error: wellKnownType: Double is unknown in conversion from JSON
{'type':'Variant','wellKnownType':'unknown'} => std::runtime_error: wellKnownType: unknown is unknown in conversion from JSON
{'type':'Variant','wellKnownType':null} => std::runtime_error: wellKnownType:  is unknown in conversion from JSON
{'type':'Variant','wellKnownType':[]} => Json::LogicError: Type is not convertible to string
)",
                   [](const std::string& text) { return outcome(text, reread); });
    const std::string start = spelledOut("{'type':'Variant','wellKnownType':'int32'");
    expectOutcomes(R"(
,'data':[1] => std::runtime_error: Missing dimensions key in conversion from JSON
,'dimensions':['x'] => Json::LogicError: Value is not convertible to Int.
,'dimensions':[2147483648] => Json::LogicError: LargestUInt out of Int range
,'dimensions':{'a':1} => Json::LogicError: in Json::Value::operator[](ArrayIndex): requires arrayValue
,'dimensions':[-1] => std::runtime_error: dataOrder key missing in conversion from JSON
,'dimensions':[1],'dataOrder':'RowMajor' => std::runtime_error: dataOrder value: RowMajor is not recognized in conversion from JSON
,'dimensions':[1],'dataOrder':{} => Json::LogicError: Type is not convertible to string
,'dimensions':[1],'dataOrder':'rowMajor','data':['x',1] => std::runtime_error: Variant dimensions less than actual data items in conversion from JSON
,'dimensions':5,'dataOrder':'rowMajor','data':[1] => std::runtime_error: Variant dimensions less than actual data items in conversion from JSON
,'dimensions':[1],'dataOrder':'rowMajor','data':{'a':1,'b':2} => std::runtime_error: Variant dimensions less than actual data items in conversion from JSON
,'dimensions':[1],'dataOrder':'rowMajor','data':{'a':1} => Json::LogicError: in Json::Value::operator[](ArrayIndex): requires arrayValue
,'dimensions':[1.9],'dataOrder':'rowMajor','data':[2] => $2
,'dimensions':[1,2],'dataOrder':'columnMajor','data':'x' => {'data':[0,0],'dataOrder':'columnMajor','dimensions':[1,2],'type':'Variant','wellKnownType':'int32'}
,'dimensions':[2,0],'dataOrder':'columnMajor' => {'data':null,'type':'Variant'}
)",
                   [&](const std::string& text) { return outcome(start + text + "}", reread); });
    for (const std::string shape :
         {"-1", "-1,-1", "0,-2147483648", "65536,65536,65536,65536", "2147483647,2147483647"}) {
        const std::string rest = spelledOut(",'dataOrder':'rowMajor','dimensions':[") + shape + "]}";
        EXPECT_EQ(outcome(start + rest, reread).substr(0, 18), "std::length_error:") << shape;
    }
}

TEST(JsonReading, elements_follow_the_conversions_of_the_parser) {
    expectOutcomes(R"(
double [1.5] => [1.5,0.0]
double [null,true] => [0.0,1.0]
double ['1'] => Json::LogicError: Value is not convertible to double.
float [0.1,1e300] => [0.10000000149011612,1e+9999]
bool [2,0.0] => [true,false]
bool ['true'] => Json::LogicError: Value is not convertible to bool.
int8 [300,-129.9] => [44,127]
int16 [2147483648] => Json::LogicError: LargestUInt out of Int range
int32 [1,2147483647.5] => Json::LogicError: double out of Int range
int64 [-9223372036854775808,9223372036854775807] => [-9223372036854775808,9223372036854775807]
int64 [9223372036854775808] => Json::LogicError: LargestUInt out of Int64 range
unsignedInt8 [300,255] => [44,255]
unsignedInt8 [-1] => Json::LogicError: LargestInt out of UInt range
unsignedInt16 [65537,4294967295] => [1,65535]
unsignedInt32 [4294967295] => [4294967295,0]
unsignedInt32 [4294967296] => Json::LogicError: LargestUInt out of UInt range
unsignedInt64 [18446744073709551615] => [18446744073709551615,0]
unsignedInt64 [-0.5] => Json::LogicError: double out of UInt64 range
complexDouble [{'i':2,'real':1,'x':0},{'real':3}] => [{'i':2.0,'real':1.0},{'i':0.0,'real':3.0}]
complexDouble [{'i':'x','real':[]}] => Json::LogicError: Value is not convertible to double.
complexInt8 [null,{'i':255}] => [{'i':0,'real':0},{'i':-1,'real':0}]
complexBool [[1]] => Json::LogicError: in Json::Value::resolveReference(key, end): requires objectValue
string ['a\u0000b',1] => ['a\u0000b','1']
zstring [null,true] => ['','true']
zstring [[]] => Json::LogicError: Type is not convertible to string
string16 [[65,65601],null] => [[65,65],null]
string16 [[-1,-65471],'abc'] => [[65535,65],null]
string16 [{'a':1}] => Json::LogicError: in Json::Value::operator[](ArrayIndex): requires arrayValue
string16 [['x']] => Json::LogicError: Value is not convertible to Int.
cell [$1,$2] => [$1,$2]
cell [$1] => [$1,{'data':null,'type':'Variant'}]
cell [{'data':null,'type':'Variant'}] => std::runtime_error: wellKnownType key missing in conversion from JSON
cell [null] => std::invalid_argument: Expected variant not found
cell [7] => Json::LogicError: in Json::Value::resolveReference(key, end): requires objectValue
struct [[{'name':'n','value':[$1]}],[]] => [[{'name':'n','value':[$1]}],null]
struct [[{'name':'n','value':[$1]},{'name':'n','value':[$2]}]] => [[{'name':'n','value':[$2]}],null]
struct [[{'value':[$1,$2]}]] => [[{'name':'','value':[$1]}],null]
struct [[{'name':'n'}]] => std::invalid_argument: Expected variant not found
struct [[{'name':'n','value':$1}]] => Json::LogicError: in Json::Value::operator[](ArrayIndex): requires arrayValue
struct [[{'name':[],'value':7}]] => Json::LogicError: Type is not convertible to string
struct [{'name':'n'}] => Json::LogicError: in Json::Value::operator[](ArrayIndex): requires arrayValue
struct [[5]] => Json::LogicError: in Json::Value::resolveReference(key, end): requires objectValue
struct ['text',5] => [null,null]
)",
                   [](const std::string& text) {
                       const std::size_t blank = text.find(' ');
                       const std::string document = spelledOut(
                           "{'type':'Variant','dataOrder':'rowMajor','dimensions':[2],'wellKnownType':'" +
                           text.substr(0, blank) + "','data':" + text.substr(blank) + "}");
                       return outcome(document, [](const Json::Value& json) { return reread(json)["data"]; });
                   });
    // Callers can make arrays with gaps, which count as null.
    JSONFormatter formatter;
    Json::Value sparse = formatter.WriteVariant({1, 2, 3});
    sparse["data"] = Json::Value();
    sparse["data"][1] = 7;
    EXPECT_TRUE(formatter.ReadVariant(sparse).isIdenticalTo(Variant({0, 7, 0})));
}

TEST(JsonReading, trees_take_what_their_documents_have) {
    JSONFormatter formatter;
    const auto rereadTree = [&](const Json::Value& json) {
        return formatter.WritePropertyTree(formatter.ReadPropertyTree(json));
    };
    expectOutcomes(R"(
null => {'name':''}
[] => Json::LogicError: in Json::Value::resolveReference(key, end): requires objectValue
{'name':7,'type':'T','generation':9} => {'name':'7','type':'T'}
{'name':{},'type':[]} => Json::LogicError: Type is not convertible to string
{'name':[],'value':null} => Json::LogicError: Type is not convertible to string
{'value':null} => std::invalid_argument: Expected variant not found
{'value':$1,'children':[]} => {'name':'','value':$1}
{'children':[{'name':'b'},{'name':'a2'},{'name':'a10','type':'T'}]} => {'children':[{'name':'a10','type':'T'},{'name':'a2'},{'name':'b'}],'name':''}
{'children':[{'name':'a','type':'T','value':$1,'children':[{}]},{'name':'a'}]} => {'children':[{'name':'a'}],'name':''}
{'children':[{'type':'T'},null]} => {'children':[{'name':''}],'name':''}
{'children':'text'} => {'name':''}
{'children':{'a':{}}} => Json::LogicError: in Json::Value::operator[](ArrayIndex): requires arrayValue
{'children':[{},5]} => Json::LogicError: in Json::Value::resolveReference(key, end): requires objectValue
{'children':[{'children':[{'value':{}}]},5]} => std::invalid_argument: Expected variant not found
)",
                   [&](const std::string& text) { return outcome(text, rereadTree); });
    Json::Value json;
    json["children"][0]["name"] = "a";
    const ZPropertyHandle read = formatter.ReadPropertyTree(json);
    EXPECT_EQ(read.node().generation(), 1u);
    EXPECT_EQ(read.child("a").sharedNode()->generation(), 1u);
    EXPECT_EQ(read.setChildValue("b", 1).sharedNode()->generation(), 2u);
}

TEST(JsonReading, what_was_written_comes_back_to_the_last_byte) {
    Testing::RandomDocuments random(Testing::RandomDocuments::Readable, 2);
    JSONFormatter formatter;
    for (int i = 0; i < 300; ++i) {
        const ZPropertyHandle tree = random.tree();
        std::stringstream document;
        formatter.serialize(document, tree.getName(), tree);
        const ZPropertyHandle read = formatter.deserialize(document);
        ASSERT_TRUE(read.isEquivalentTo(tree)) << document.str();
        std::ostringstream again;
        formatter.serialize(again, read.getName(), read);
        ASSERT_EQ(again.str(), document.str());
        const Variant value = random.value();
        ASSERT_TRUE(formatter.ReadVariant(formatter.WriteVariant(value)).isIdenticalTo(value));
    }
}

} // namespace
