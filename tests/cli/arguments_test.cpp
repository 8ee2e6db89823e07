// SPDX-License-Identifier: MIT
#include "cli/options/arguments.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "cli/failure.h"
#include "cli/options/usage.h"
#include "cli/options/values.h"

namespace {

using cli::Column;
using cli::Format;
using cli::Options;
using Words = std::vector<std::string>;

struct AcceptedCase {
    Words words;
    std::function<bool(const Options&)> isAsMeant;
};

TEST(Arguments, MeanWhatTheySay) {
    const AcceptedCase kCases[] = {
        {{}, [](const Options& o) { return o.command == cli::Command::kList; }},
        {{"list"}, [](const Options& o) { return o.command == cli::Command::kList; }},
        {{"services"}, [](const Options& o) { return o.command == cli::Command::kServices; }},
        {{"check", "--json"},
         [](const Options& o) { return o.presentation.format == Format::kJson; }},
        {{"check", "--timeout", "0.5"}, [](const Options& o) { return o.timeoutSeconds == 0.5; }},
        {{"--by", "volume"}, [](const Options& o) { return o.question.by == 1; }},
        {{"--jobs", "7"}, [](const Options& o) { return o.question.jobs == 7U; }},
        {{"metrics", "--jobs=1024", "--source", "walk"},
         [](const Options& o) {
             return o.question.jobs == 1024U && o.question.source == cli::SourceKind::kWalk;
         }},
        {{"--source", "iterator"},
         [](const Options& o) { return o.question.source == cli::SourceKind::kIterator; }},
        {{}, [](const Options& o) { return !o.question.jobs; }},
        {{},
         [](const Options& o) {
             const cli::Asked& asked = o.question.asked;
             return asked.service && asked.connection && !asked.folder;
         }},
        {{"--json"}, [](const Options& o) { return o.question.asked.folder; }},
        {{"--json"}, [](const Options& o) { return o.question.asked.facts.none(); }},
        {{}, [](const Options& o) { return o.question.asked.facts.none(); }},
        {{"-o", "+mode,pid,+size"},
         [](const Options& o) {
             return o.presentation.columns == std::vector{Column::kPid} &&
                    o.presentation.added == std::vector{Column::kMode, Column::kSize} &&
                    o.question.asked.facts.count() == 2;
         }},
        {{"--where", "size>=1.5k"},
         [](const Options& o) {
             const auto& each = o.question.selection.conditions.at(0);
             return each.bound && each.bound->is == cli::Bound::Is::kAtLeast &&
                    each.bound->number == 1536 && !each.bound->age &&
                    o.question.asked.facts.count() == 1;
         }},
        {{"--where", "started<2h"},
         [](const Options& o) {
             const auto& each = o.question.selection.conditions.at(0);
             return each.bound && each.bound->age && each.bound->number == 7200;
         }},
        {{"--since", "90"},
         [](const Options& o) {
             const auto& each = o.question.selection.conditions.at(0);
             return each.column == Column::kStarted && each.bound->number == 90;
         }},
        {{"--json", "--schema", "2"},
         [](const Options& o) { return o.question.asked.facts.count() == 13 && !o.question.time; }},
        {{"--format", "jsonl", "--schema=2", "-o", "pid,size"},
         [](const Options& o) { return o.question.asked.facts.count() == 1; }},
        {{"check", "--json", "--schema", "2"},
         [](const Options& o) { return o.presentation.schema == 2; }},
        {{"--match", "user=a<b"},
         [](const Options& o) { return o.question.selection.conditions.at(0).text == "a<b"; }},
        {{"--sort", "user,size", "--group-by", "share"},
         [](const Options& o) {
             return o.question.sort == std::vector{Column::kUser, Column::kSize} &&
                    o.question.group == Column::kShare;
         }},
        {{"--limit", "5", "-o", "+size"}, [](const Options& o) { return o.question.most == 5U; }},
        {{"--limit", "5", "--watch", "-o", "+size"},
         [](const Options& o) { return !o.question.most; }},
        {{"--limit", "5", "--count-by", "owner"},
         [](const Options& o) { return !o.question.most; }},
        {{"--watch", "--group-by", "user", "--wide"},
         [](const Options& o) { return o.presentation.wide && o.question.group == Column::kUser; }},
        {{"--count-by", "owner", "--sum", "space"},
         [](const Options& o) { return o.question.asked.facts.count() == 2; }},
        {{"metrics"},
         [](const Options& o) {
             return o.question.asked.factsOfDeleted && o.question.asked.facts.count() == 1;
         }},
        {{"metrics", "--sum", "size"},
         [](const Options& o) { return !o.question.asked.factsOfDeleted; }},
        {{"--pids"},
         [](const Options& o) {
             return !o.question.asked.service && !o.question.asked.connection;
         }},
        {{"-q", "--where", "user=a", "--folders", "no"},
         [](const Options& o) {
             const cli::Asked& asked = o.question.asked;
             return !asked.service && asked.connection && asked.folder;
         }},
        {{"--count-by", "service"},
         [](const Options& o) { return o.question.asked.service && !o.question.asked.connection; }},
        {{"--print0", "path", "--sort", "host"},
         [](const Options& o) { return !o.question.asked.service && o.question.asked.connection; }},
        {{"--by=volume"}, [](const Options& o) { return o.question.by == 1; }},
        {{"--sort", "pid", "--reverse"},
         [](const Options& o) {
             return o.question.sort == std::vector{Column::kPid} && o.question.reverse;
         }},
        {{"--json"}, [](const Options& o) { return o.presentation.format == Format::kJson; }},
        {{"--json", "--format", "json"},
         [](const Options& o) { return o.presentation.format == Format::kJson; }},
        {{"--where", "user=a=b"},
         [](const Options& o) { return o.question.selection.conditions.at(0).text == "a=b"; }},
        {{"--match", "path=[x,y]", "--where", "host=-"},
         [](const Options& o) {
             return o.question.selection.conditions.at(1).text == "[x,y]" &&
                    o.question.selection.conditions.at(0).text == "-";
         }},
        {{"--not-match", "user=bob"},
         [](const Options& o) {
             const auto& each = o.question.selection.conditions.at(0);
             return each.negated && each.contains;
         }},
        {{"--match", "time=2024"}, [](const Options& o) { return o.question.time; }},
        {{"--columns", "path,time"},
         [](const Options& o) {
             return o.question.time &&
                    o.presentation.columns == std::vector<Column>{Column::kPath, Column::kTime};
         }},
        {{"/volume1/[a]", "b", "--", "-q", "--"},
         [](const Options& o) {
             return o.question.selection.paths == Words{"/volume1/[a]", "b", "-q", "--"} &&
                    !o.quiet;
         }},
        {{"--watch"}, [](const Options& o) { return o.watchSeconds == 2; }},
        {{"--watch", "0.5"}, [](const Options& o) { return o.watchSeconds == 0.5; }},
        {{"--watch", "/volume1"},
         [](const Options& o) {
             return o.watchSeconds == 2 && o.question.selection.paths.size() == 1;
         }},
        {{"--watch=5", "7"},
         [](const Options& o) {
             return o.watchSeconds == 5 && o.question.selection.paths == Words{"7"};
         }},
        {{"--print0", "path"},
         [](const Options& o) { return o.presentation.print0Column == Column::kPath; }},
        {{"-q", "--strict"}, [](const Options& o) { return o.quiet && o.strict; }},
        {{"--limit", "3"}, [](const Options& o) { return o.presentation.limit == 3u; }},
        {{"metrics", "--output", "/a b"}, [](const Options& o) { return o.outputFile == "/a b"; }},
        {{"busy", "/a", "--pids", "/b"},
         [](const Options& o) {
             return o.command == cli::Command::kBusy && o.question.selection.paths.size() == 2 &&
                    o.presentation.format == Format::kPids && !o.waitSeconds && !o.inside;
         }},
        {{"idle", "--wait=2.5", "--inside", "-q"},
         [](const Options& o) {
             return o.command == cli::Command::kIdle && o.waitSeconds == 2.5 && o.inside && o.quiet;
         }},
        {{"idle", "--wait", "60"},
         [](const Options& o) {
             return o.waitSeconds > 1e9 && o.question.selection.paths == Words{"60"};
         }},
        {{"idle", "--", "--wait"},
         [](const Options& o) {
             return !o.waitSeconds && o.question.selection.paths == Words{"--wait"};
         }},
        {{"-V"}, [](const Options& o) { return o.version; }},
        {{"help"}, [](const Options& o) { return o.help && o.command == cli::Command::kList; }},
        {{"help", "metrics"},
         [](const Options& o) { return o.help && o.command == cli::Command::kMetrics; }},
        {{"check", "-h"},
         [](const Options& o) { return o.help && o.command == cli::Command::kCheck; }},
        {{"lsit"}, [](const Options& o) { return o.commandHint == " (did you mean 'list'?)"; }},
        {{"./lsit"}, [](const Options& o) { return o.commandHint.empty(); }},
        {{"--deleted", "only"},
         [](const Options& o) { return o.question.selection.deleted == cli::Flagged::kOnly; }},
    };
    for (const AcceptedCase& each : kCases) {
        try {
            EXPECT_TRUE(each.isAsMeant(cli::ParseArguments(each.words)))
                << testing::PrintToString(each.words);
        } catch (const std::exception& error) {
            ADD_FAILURE() << testing::PrintToString(each.words) << ": " << error.what();
        }
    }
}

struct RefusedCase {
    Words words;
    std::string said;
};

TEST(Arguments, AreRefusedWithAWordOfHelp) {
    const RefusedCase kCases[] = {
        {{"--sotr", "pid"}, "did you mean '--sort'"},
        {{"busy", "--wait=soon"}, "seconds"},
        {{"busy", "--json", "--pids"}, "only one"},
        {{"idle", "--by", "volume"}, "there is no option '--by'"},
        {{"--wher=user=x"}, "did you mean '--where'"},
        {{"--sort", "usr"}, "did you mean 'user'"},
        {{"--sort", "path,tme"}, "did you mean 'time'"},
        {{"--columns", "path,pth"}, "did you mean 'path'"},
        {{"--columns", "path,path"}, "twice"},
        {{"--columns", ""}, "it takes"},
        {{"--format", "jsnl"}, "did you mean 'jsonl'"},
        {{"--by", "sharex"}, "did you mean 'share'"},
        {{"--hidden", "onyl"}, "did you mean 'only'"},
        {{"--where", "alice"}, "COLUMN=TEXT"},
        {{"--where", "user="}, "behind the '='"},
        {{"--where", "hiden=yes"}, "did you mean 'hidden'"},
        {{"--where", "user>a"}, "user can't be compared"},
        {{"--where", "size>big"}, "a size such as"},
        {{"--where", "size>-1"}, "a size such as"},
        {{"--where", "started<soon"}, "an age such as"},
        {{"--where", "pid>1K"}, "a number"},
        {{"--where", "size>"}, "behind the '>'"},
        {{"--since", "yesterday"}, "--since takes"},
        {{"--columns", "+sze"}, "did you mean 'size'"},
        {{"--columns", ","}, "it takes"},
        {{"-o"}, "--columns needs columns"},
        {{"--json", "-o", "+size"}, "--columns"},
        {{"--sum", "size"}, "--count-by"},
        {{"--count-by", "user", "--sum", "pid"}, "it takes: size, space"},
        {{"--group-by", "user", "--json"}, "--group-by"},
        {{"--watch", "--format", "jsonl", "--header"}, "--header"},
        {{"--watch", "--format", "jsonl", "--wide"}, "--wide"},
        {{"--watch", "--format", "jsonl", "--group-by", "user"}, "--group-by"},
        {{"--wide", "--json"}, "--wide"},
        {{"--schema", "3", "--json"}, "it takes: 1, 2"},
        {{"--schema", "2"}, "for JSON"},
        {{"busy", "--schema", "2", "--pids"}, "for JSON"},
        {{"--json", "--header"}, "--header"},
        {{"--sort"}, "--sort needs columns with commas between them behind it"},
        {{"--where"}, "--where needs COLUMN=TEXT behind it"},
        {{"--deleted"}, "--deleted needs 'yes', 'no' or 'only' behind it"},
        {{"metrics", "--output"}, "--output needs the name of a file behind it"},
        {{"help", "metrcs"}, "there is no command 'metrcs' (did you mean 'metrics'?)"},
        {{"help", "list", "check"}, "'help' takes one command"},
        {{"--limit", "0"}, "from 1 up"},
        {{"--limit", "x\n"}, "'x\\n'"},
        {{"--timeout", "0"}, "seconds"},
        {{"--timeout", "nan"}, "seconds"},
        {{"--watch=never"}, "seconds"},
        {{"--jobs", "0"}, "from 1 to 1024"},
        {{"--jobs", "1025"}, "from 1 to 1024"},
        {{"--source", "proc"}, "auto, iterator, walk"},
        {{"--json", "--pids"}, "only one"},
        {{"--json", "--columns", "path"}, "--columns"},
        {{"--pids", "--no-header"}, "--no-header"},
        {{"--pids", "--count-by", "user"}, "--count-by"},
        {{"--count-by", "user", "--sort", "pid"}, "--sort"},
        {{"--watch", "--json"}, "jsonl"},
        {{"--watch", "-q"}, "--quiet"},
        {{"services", "--sort", "pid"}, "no option '--sort'"},
        {{"services", "/volume1"}, "takes no PATH"},
    };
    for (const RefusedCase& each : kCases) {
        try {
            cli::ParseArguments(each.words);
            ADD_FAILURE() << testing::PrintToString(each.words) << " was accepted";
        } catch (const cli::UsageError& error) {
            EXPECT_NE(std::string(error.what()).find(each.said), std::string::npos) << error.what();
        }
    }
}

TEST(Columns, BeginWithThoseOfTheLibrary) {
    for (const auto& [member, name] : VORN::FileHandle::OpenedFile::mapJsonColumn) {
        EXPECT_EQ(cli::ColumnName(static_cast<Column>(member)), name);
    }
}

constexpr cli::Command kCommands[] = {cli::Command::kList,  cli::Command::kServices,
                                      cli::Command::kCheck, cli::Command::kMetrics,
                                      cli::Command::kBusy,  cli::Command::kIdle};

TEST(Help, FitsAScreen) {
    for (const cli::Command command : kCommands) {
        const std::string_view help = cli::HelpText(command);
        EXPECT_GE(std::count(help.begin(), help.end(), '\n'), 10);
        EXPECT_LE(std::count(help.begin(), help.end(), '\n'), 50);
        for (size_t begin = 0; begin < help.size();) {
            const size_t end = help.find('\n', begin);
            EXPECT_LE(end - begin, 90u) << help.substr(begin, end - begin);
            begin = end + 1;
        }
    }
}

TEST(Help, NamesEveryOptionOfItsCommand) {
    for (const cli::Command command : kCommands) {
        for (const std::string& name : cli::OptionNames(command)) {
            EXPECT_NE(cli::HelpText(command).find(name), std::string_view::npos)
                << static_cast<int>(command) << ' ' << name;
        }
    }
}

TEST(Help, OfTheListNamesEveryOptionAndColumn) {
    const std::string_view help = cli::HelpText(cli::Command::kList);
    for (const auto command : kCommands) {
        for (const std::string& name : cli::OptionNames(command)) {
            EXPECT_NE(help.find(name), std::string_view::npos) << name;
        }
    }
    for (const std::string& name : cli::ColumnNames()) {
        EXPECT_NE(help.find(name), std::string_view::npos) << name;
    }
}

}  // namespace
