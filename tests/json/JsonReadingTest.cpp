#include <zelm/json/JSONFormatter.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cxxabi.h>
#include <memory>
#include <regex>
#include <sstream>
#include <string>

using namespace Zelm;

namespace {

/// JSON text in short: `'` for a quotation mark, `#1` for the value 1.
std::string spelledOut(const std::string& text) {
    std::string result = std::regex_replace(
        text, std::regex("#(.)"),
        "{'data':[$1],'dataOrder':'rowMajor','dimensions':[1],'type':'Variant','wellKnownType':'int32'}");
    std::replace(result.begin(), result.end(), '\'', '"');
    return result;
}

/// Holds what `read` makes of documents, or the exact type and the text of its exception, against a table of
/// rows `text => outcome`; `before` and `after` stand around each text.
template <class Read>
void expectOutcomes(const std::string& before, const std::string& after, const std::string& table,
                    Read&& read) {
    std::istringstream rows(table.substr(1));
    for (std::string row; std::getline(rows, row);) {
        const std::size_t arrow = row.find(" => ");
        Json::Value json;
        ASSERT_TRUE(Json::Reader().parse(spelledOut(before + row.substr(0, arrow) + after), json)) << row;
        std::string outcome;
        try {
            outcome = Json::FastWriter().write(read(json));
            outcome.pop_back();
        } catch (const std::exception& error) {
            const std::unique_ptr<char, void (*)(void*)> name(
                abi::__cxa_demangle(typeid(error).name(), nullptr, nullptr, nullptr), std::free);
            outcome = std::string(name.get()) + ": " + error.what();
        }
        EXPECT_EQ(outcome, spelledOut(row.substr(arrow + 4))) << row;
    }
}

Json::Value rereadValue(const Json::Value& json) {
    return JSONFormatter().WriteVariant(JSONFormatter().ReadVariant(json));
}

TEST(JsonReading, members_are_tested_in_order) {
    expectOutcomes("{'type':'Variant'", "}", R"(
,'type':'variant' => std::invalid_argument: Expected variant not found
,'data':null => std::runtime_error: wellKnownType key missing in conversion from JSON
,'wellKnownType':'Double' => std::runtime_error: wellKnownType: Double is unknown in conversion from JSON
,'wellKnownType':'int32','data':[1] => std::runtime_error: Missing dimensions key in conversion from JSON
,'wellKnownType':'int32','dimensions':[-1] => std::runtime_error: dataOrder key missing in conversion from JSON
,'wellKnownType':'int32','dimensions':[1],'dataOrder':'RowMajor' => std::runtime_error: dataOrder value: RowMajor is not recognized in conversion from JSON
,'wellKnownType':'int32','dimensions':[1],'dataOrder':'rowMajor','data':['x',1] => std::runtime_error: Variant dimensions less than actual data items in conversion from JSON
,'wellKnownType':'int32','dimensions':[1,2],'dataOrder':'columnMajor','data':'x' => {'data':[0,0],'dataOrder':'columnMajor','dimensions':[1,2],'type':'Variant','wellKnownType':'int32'}
,'wellKnownType':'int32','dimensions':[0,-1],'dataOrder':'rowMajor' => std::length_error: Negative dimension in conversion from JSON
)",
                   rereadValue);
}

TEST(JsonReading, elements_follow_the_conversions_of_the_parser) {
    expectOutcomes("{'type':'Variant','dataOrder':'rowMajor','dimensions':[2],'wellKnownType':", "}", R"(
'int8','data':[300,-129.9] => [44,127]
'unsignedInt8','data':[-1] => Json::LogicError: LargestInt out of UInt range
'complexInt8','data':[null,{'i':255,'x':0}] => [{'i':0,'real':0},{'i':-1,'real':0}]
'string16','data':[[-1,65601],null] => [[65535,65],null]
'cell','data':[#1] => [#1,{'data':null,'type':'Variant'}]
'struct','data':[[{'name':'n','value':[#1]},{'name':'n','value':[#2]}]] => [[{'name':'n','value':[#2]}],null]
'struct','data':[[{'name':'n','value':#1}]] => Json::LogicError: in Json::Value::operator[](ArrayIndex): requires arrayValue
)",
                   [](const Json::Value& json) { return rereadValue(json)["data"]; });
}

TEST(JsonReading, trees_take_what_their_documents_have) {
    expectOutcomes("", "", R"(
{'children':[{'name':'b'},{'name':'a','type':'T','value':#1,'children':[{}]},{'name':'a'}]} => {'children':[{'name':'a'},{'name':'b'}],'name':''}
{'children':[{'type':'T','value':#2},null],'value':#1} => {'children':[{'name':''}],'name':'','value':#1}
)",
                   [](const Json::Value& json) {
                       return JSONFormatter().WritePropertyTree(JSONFormatter().ReadPropertyTree(json));
                   });
}

} // namespace
