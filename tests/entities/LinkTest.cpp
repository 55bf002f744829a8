#include <entities/Story.h>
#include <support/ExpectThrow.h>

#include <zelm/variant/Struct.h>

using namespace Zelm;
using namespace Zelm::Testing;

namespace {

// clang-format off
TEST(LinkPath, is_the_way_between_two_texts_and_leads_to_an_entity_by_a_final_name) {
    const char* const ways[][3] = {
        {"/a/link", "/a/x", "../x"}, {"a/b/c", "a/d", "../../d"}, {"a/b", "a/b/c", "c"}, {"", "a/b", "a/b"},
        {"A", "a", "../a"}, {"/a/b", "/a/b", ""}, {"", "", ""}, {"a", "/x", "..//x"}, {"a//b", "a/b", "../../b"},
        {"/a", "/", ".."}, {"/", "/a", "a"}, {"a/b/", "a/b", ""}, {"ab/c", "a/c", "../../a/c"}};
    for (const auto& [from, to, path] : ways) {
        EXPECT_EQ(GetRelativePath(from, to), path) << from << " to " << to;
    }
    Story story("{a:{b:{y:1} l:>1 x:1} x:1}");
    const char* const ends[][2] = {
        {"../x", "/a/x"}, {"../b/y", "/a/b/y"}, {"../../x", "/x"}, {"/x", "/x"}, {"/a/b", "/a/b"}, {"../l", "/a/l"},
        {"../x/..", "/a/x"}, {"../x/../b", "/a/b"}, {"../x/", "/a/x"}, {"../b/../../../x", "/a/b"},
        {"x", ""}, {"./../x", ""}, {"/../x", ""}, {"../../../x", ""}, {"../X", ""}, {"..//x", ""}, {"//x", ""},
        {"../b/x", ""}, {"../none/../x", ""}, {"..", ""}, {"/", ""}, {"", ""}};
    for (const auto& [path, found] : ends) {
        const auto entity = dynamic_cast<Story::Link&>(*story.at("a/l")).findEntity(path).lock();
        EXPECT_EQ(entity ? entity->getPath() : "", found) << path;
    }
}

TEST(Link, follows_before_the_call_returns_and_again_after_each_loading) {
    play("{l:>7@../x x:1}", {{"x = 2", "1 {l:>7@../x x:2}"}, {"load", "1 {l:>2@../x x:2}"}, {"x = 3", "2 {l:>3@../x x:3}"},
        {"load", "0"}, {"file", "1"}, {"x = 4", "1 {l:>3@../x x:4}"}, {"load", "1 {l:>4@../x x:4}"}, {"keep", "0"},
        {"x = 5", "2 {l:>5@../x x:5}"}, {"back", "1 {l:>4@../x x:4}"}, {"x = 6", "2 {l:>6@../x x:6}"}});
    play("{l:>7 x:1}", {{"l follows x", "1 {l:>1 x:1}"}, {"x = 2", "2 {l:>2 x:2}"}, {"save", "1 {l:>2@../x x:2}"}});
}

TEST(Link, has_one_target_at_a_time_and_no_state_leads_it_elsewhere) {
    play("{l:>0@../x x:1 y:2}", {{"load", "1 {l:>1@../x x:1 y:2}"}, {"l follows none", "0"}, {"x = 3", "2 {l:>3@../x x:3 y:2}"},
        {"keep", "0"}, {"l follows y", "1 {l:>2@../x x:3 y:2}"}, {"x = 4", "1 {l:>2@../x x:4 y:2}"},
        {"y = 5", "2 {l:>5@../x x:4 y:5}"}, {"save", "1 {l:>5@../y x:4 y:5}"}, {"back", "1 {l:>3@../x x:3 y:2}"},
        {"x = 6", "1 {l:>3@../x x:6 y:2}"}, {"y = 7", "2 {l:>7@../x x:6 y:7}"}, {"save", "1 {l:>7@../y x:6 y:7}"}});
}

TEST(Link, without_a_target_in_its_document_keeps_its_copy_and_saves_no_path) {
    play("{l:>7@../none}", {{"load", "0"}, {"save", "1 {l:>7}"}, {"file", "1"}, {"load", "0"}});
    play("{l:>7 x:1}", {{"l follows other", "1 {l:>4 x:1}"}, {"other = 5", "1 {l:>5 x:1}"}, {"save", "1"}});
    // It does not come back by a path that it has been connected by.
    play("{l:>7@../x x:1}", {{"load", "1 {l:>1@../x x:1}"}, {"/ without x", "1 {l:>1@../x}"}, {"l clean", "0"},
        {"save", "1 {l:>1}"}, {"/ gets9 x", "1 {l:>1 x:9}"}, {"keep", "0"}, {"back", "1"}});
    // Metadata that mean nothing to a link do it no harm.
    const std::pair<const char*, Variant> entries[] = {{"_path", Struct()}, {"_path", std::vector<Variant>(1)}, {"_dirt", true}};
    for (const auto& [key, value] : entries) {
        const ZGenericObject l = read(">7"), metadata = l.child("__Metadata").setChildValue(key, value);
        ZObserverEntity<ZVariableEntity> entity("l", ZObserver(l.insertChild("__Metadata", metadata)));
        entity.onPostLoad();
        EXPECT_FALSE(entity.isDirty()) << key;
        EXPECT_EQ(drawn(entity.genericState()).substr(0, 2), ">7") << key;
    }
}

TEST(Link, is_cut_or_dropped_alone) {
    play("{a:{l:>0@../x o:>0@../../y x:1} k:>0@../y y:2}", {{"load", "3 {a:{l:>1@../x o:>2@../../y x:1} k:>2@../y y:2}"},
        {"cut", "0"}, {"a cut", "0"}, {"a/x = 3", "2 {a:{l:>3@../x o:>2@../../y x:3} k:>2@../y y:2}"},
        {"y = 4", "2 {a:{l:>3@../x o:>2@../../y x:3} k:>4@../y y:4}"}, {"k cut", "0"},
        {"y = 5", "1 {a:{l:>3@../x o:>2@../../y x:3} k:>4@../y y:5}"}, {"save", "3 {a:{l:>3@../x o:>2 x:3} k:>4 y:5}"},
        {"clear", "0 {a:{l:>3@../x o:>2 x:3} y:5}"}});
}

TEST(Link, is_not_lost_by_saving_before_loading_is_complete) {
    play("{a:>{l:>0}@../z y:1 z:{l:>0@../../y}}", {{"load", "4 {a:>{l:>1}@../z y:1 z:{l:>1}}"},
        {"y = 2", "3 {a:>{l:>2}@../z y:2 z:{l:>2}}"}, {"save", "3 {a:>{l:>2@../../y}@../z y:2 z:{l:>2@../../y}}"}});
    play("{l:>0@../x x:1}", {{"save", "1 {l:>0 x:1}"}, {"keep", "0"}, {"back", "2 {l:>1 x:1}"}});
}

TEST(Link, depends_on_its_target_and_has_no_marks_in_the_document) {
    play("{l:>1@../x x:1}", {{"load", "1"}, {"l mark", "0"}, {"x mark", "0"}, {"l clean", "0"}, {"l mark", "0"}, {"save", "1"}});
    const auto target = std::make_shared<DocumentEntity>("target");
    auto l = std::make_unique<ZObserverEntity<DocumentEntity>>("l", ZObserver());
    l->setObserved(target);
    EXPECT_EQ(l->state().linkType(), "Document");
    bool isFirst = false;
    target->work = [&] { isFirst = l->isDirty(); };
    Inside::markDirty(*target);
    Inside::markDirty(*l);
    Inside::makeClean(*l);
    EXPECT_TRUE(isFirst && !l->isDirty() && !target->isDirty());
    target->work = [&] { l.reset(); };
    Inside::markDirty(*target);
    Inside::makeClean(*l);
    EXPECT_FALSE(l || target->isDirty());
}

TEST(Link, ends_in_a_circle) {
    play("{a:{l:>{}@../l x:1}}", {{"load", "0"}, {"a/x = 2", "1 {a:{l:>{}@../l x:2}}"}, {"save", "1 {a:{l:>{} x:2}}"}});
    play("{a:{l:>{}@../../a x:1}}", {{"load", "0"}, {"a/x = 2", "1 {a:{l:>{}@../../a x:2}}"}, {"save", "1 {a:{l:>{} x:2}}"}});
    // The link that closes a circle stops following, keeps the copy that it has, and still knows its way.
    play("{l:>1@../m m:>1@../l}", {{"load", "7 {l:>>1@../m m:>1}"}, {"l mark", "0"}, {"m mark", "0"}, {"clean", "0"},
        {"save", "3 {l:>>1@../l@../m m:>1@../l}"}});
    play("{a:{l:>{}@../../b x:1} b:{l:>{}@../../a}}", {{"load", "7 {a:{l:>{l:>{}}@../../b x:1} b:{l:>{}}}"},
        {"a/x = 2", "1 {a:{l:>{l:>{}}@../../b x:2} b:{l:>{}}}"}, {"b gets9 y", "2 {a:{l:>{l:>{} y:9}@../../b x:2} b:{l:>{} y:9}}"},
        {"save", "3 {a:{l:>{l:>{}@../../a y:9}@../../b x:2} b:{l:>{}@../../a y:9}}"}, {"file", "3"},
        {"load", "7 {a:{l:>{l:>{} y:9}@../../b x:2} b:{l:>{} y:9}}"}, {"a mark", "0"}, {"a/l mark", "0"},
        {"b mark", "0"}, {"b/l mark", "0"}, {"clean", "0"}});
    play("{a:{l:>{}@../../b x:1} b:{l:>{}@../../c} c:{l:>{}@../../a}}",
        {{"load", "12 {a:{l:>{l:>{l:>{}}}@../../b x:1} b:{l:>{l:>{}}} c:{l:>{}}}"}, {"save", "6 ..."}});
}

TEST(Link, hands_on_a_change_by_a_number_of_ways_that_has_a_bound) {
    std::string a, b, ladder;
    for (const char letter : std::string("abcdefgh")) {
        a += std::string(1, letter) + ":>{}@../../b ";
        b += std::string(1, letter) + ":>{}@../../a ";
    }
    Story circles("{a:{" + a + "x:1} b:{" + b + "}}");
    circles.take("load");
    EXPECT_LT(circles.count, 1000);
    circles.take("save");
    EXPECT_LT(circles.picture.size(), 10000U);
    for (char rung = 'a'; rung < 'z'; ++rung) {
        const std::string next = std::string(":>{}@../../") + static_cast<char>(rung + 1);
        ladder += std::string(1, rung) + ":{l" + next + " r" + next + "} ";
    }
    DocumentEntity stairs("stairs", read("{" + ladder + "z:{}}"));
    EXPECT_THROW_MSG(stairs.onPostLoad(), std::length_error, "Links hand on a change too often.");
}

TEST(Link, stands_what_its_listeners_do) {
    play("{l:>1@../x x:1}", {{"load", "1"}, {"/ does 9 save", "0"}, {"l does 9 l save", "0"}, {"x = 2", "5 {l:>2@../x x:2}"}});
    play("{l:>1@../x x:1}", {{"l does 1 fails late", "0"}, {"load", "1 range_error: late"}, {"x does 1 fails late", "0"},
        {"x = 3", "2 {l:>3@../x x:3} range_error: late"}, {"/ does 1 fails late", "0"}, {"x = 4", "2 {l:>4@../x x:4} range_error: late"}});
    // What changes the target again, before or behind the link, leaves the newest value everywhere.
    play("{a:{l:>1@../x x:1}}", {{"a/x does 1 a/x = 3", "0"}, {"load", "1"}, {"a/x = 2", "4 {a:{l:>3@../x x:3}}"},
        {"a/x does 1 a/x = 5", "0"}, {"a/x = 4", "4 {a:{l:>5@../x x:5}}"}, {"a/l does 1 a/x = 7", "0"},
        {"a/x = 6", "4 {a:{l:>7@../x x:7}}"}, {"a does 1 a/x = 9", "0"}, {"a/x = 8", "4 {a:{l:>9@../x x:9}}"},
        {"/ does 1 a/x = 2", "0"}, {"a/x = 1", "4 {a:{l:>2@../x x:2}}"}, {"save", "1"}});
    play("{l:>{c:1}@../x x:{c:1}}", {{"load", "1"}, {"l does 1 x gets9 c", "0"}, {"x/c = 2", "4 {l:>{c:9}@../x x:{c:9}}"}});
    play("{l:>1@../x x:1}", {{"keep", "0"}, {"x does 1 back", "0"}, {"load", "1"}, {"x = 2", "3"}});
    play("{l:>1@../x x:1}", {{"load", "1"}, {"l does 1 / without x", "0"}, {"x = 2", "3 {l:>2@../x}"}, {"save", "1 {l:>2}"}});
    play("{l:>1 z:{k:>2}}", {{"z does 1 / without l", "0"}, {"l follows z", "2 {z:{k:>2}}"}});
    play("{l:>1 x:1}", {{"l does 1 / without l", "0"}, {"l follows x", "2 {x:1}"}});
    for (const auto& row : Rows{{"without l", "{x:2}"}, {"clear", "{x:2}"}, {"back", "{}"}, {"end", "gone"}}) {
        for (const std::string place : {"x", "l", "/"}) {
            for (const bool isEarly : {false, true}) {
                Story story("{l:>1@../x x:1}");
                std::string steps[] = {"load", place + " does 1 / " + row.first, "x = 2"};
                std::swap(steps[0], steps[isEarly]);
                for (const auto& step : steps) {
                    story.outcomeOf(step);
                }
                EXPECT_EQ(story.picture, row.second) << steps[0] << ", " << steps[1];
            }
        }
    }
}
// clang-format on

} // namespace
