// SPDX-License-Identifier: MIT
// rkcfg: reads and writes the configuration store from a shell. docs/rkcfg.1 is its manual.
#include "knownnames.h"
#include "rkcfg.h"
#include "rkos.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace {

enum Exit { Done = 0, Absent = 1, Usage = 2, Failed = 3 };

struct Arguments : std::vector<const char *> {
    using vector::vector;
    bool force = false;   // "--force" came first: a new name is meant
    bool literal = false; // "--" came first: nothing is guessed
};

void *const kStore = RKCFG_DEFAULT_STORE;

int fail(const char *what)
{
    fprintf(stderr, "rkcfg: %s\n", what);
    return Failed;
}

// What was printed counts only when it arrived, for example not on a full disk.
int finish(int result)
{
    if (fflush(stdout) != 0 || ferror(stdout) != 0)
        return fail("cannot write the output");
    return result;
}

void print(std::string_view text)
{
    fwrite(text.data(), 1, text.size(), stdout);
}

// The stored bytes without the terminating zero. False when there is no such text.
bool readText(const char *path, const char *name, std::string &text)
{
    uint32_t size = 0;
    if (rkCFGValueString(kStore, path, name, nullptr, &size, 0) != 0)
        return false;
    // Another process may have put a longer text there between the two calls.
    for (uint32_t room = 0; room < size;) {
        room = size;
        text.resize(room);
        if (rkCFGValueString(kStore, path, name, text.data(), &size, 0) != 0)
            return false;
    }
    text.resize(size - 1);
    return true;
}

// "Absent" is an answer only when the store could be asked.
int absentOrFailed(const char *path)
{
    const auto ignore = [](void *, const char *, const char *, const char *, uint32_t, uint32_t) {
        return 1;
    };
    return rkCFGForEach(kStore, path, ignore, nullptr) == 0 ? Absent : fail("the store cannot be read");
}

int get(const Arguments &arguments)
{
    std::string text;
    uint32_t number = 0;
    if (readText(arguments[0], arguments[1], text))
        print(text);
    else if (rkCFGValueDword(kStore, arguments[0], arguments[1], &number, 0) == 0)
        printf("%u", number);
    else
        return absentOrFailed(arguments[0]);
    print("\n");
    return finish(Done);
}

// A write says only whether it changed something; reading back and saving tell whether it is there.
int saved(bool there)
{
    if (!there)
        return fail("the value could not be written");
    return rkCFGSave(kStore, nullptr, 0) == 0 ? Done : fail("the value could not be made durable");
}

bool parseNumber(const char *text, uint32_t &number)
{
    char *end = nullptr;
    errno = 0;
    const unsigned long long value = strtoull(text, &end, 0);
    number = static_cast<uint32_t>(value);
    return text[0] >= '0' && text[0] <= '9' && *end == '\0' && errno == 0 && value <= UINT32_MAX;
}

int setText(const Arguments &arguments)
{
    std::string text(arguments[2]);
    auto size = static_cast<uint32_t>(text.size() + 1);
    rkCFGValueString(kStore, arguments[0], arguments[1], text.data(), &size, 1);
    std::string now;
    return saved(readText(arguments[0], arguments[1], now) && now == text);
}

int setDword(const Arguments &arguments)
{
    uint32_t number = 0;
    if (!parseNumber(arguments[2], number)) {
        fprintf(stderr, "rkcfg: %s: not a number from 0 to 4294967295\n", arguments[2]);
        return Usage;
    }
    uint32_t now = 0;
    rkCFGValueDword(kStore, arguments[0], arguments[1], &number, 1);
    return saved(rkCFGValueDword(kStore, arguments[0], arguments[1], &now, 0) == 0 && now == number);
}

// What the server's programs read, else what is there: a number that became a text would be none for them.
KnownType typeOf(const char *path, const char *name)
{
    uint32_t number = 0;
    std::string text;
    const KnownType known = knownType(path, name);
    if (known != KnownType::None)
        return known;
    if (rkCFGValueDword(kStore, path, name, &number, 0) == 0)
        return KnownType::Number;
    return readText(path, name, text) ? KnownType::Text : KnownType::None;
}

int set(const Arguments &arguments)
{
    const KnownType type = arguments.literal ? KnownType::Text : typeOf(arguments[0], arguments[1]);
    if (type == KnownType::Number)
        return setDword(arguments);
    if (type == KnownType::Text || arguments.force)
        return setText(arguments);
    if (const int result = absentOrFailed(arguments[0]); result != Absent)
        return result;
    fprintf(stderr, "rkcfg: %s %s: unknown and not there (set-text, set-dword or set --force make it)\n",
            arguments[0], arguments[1]);
    return Usage;
}

int unset(const Arguments &arguments)
{
    std::string text;
    uint32_t number = 0;
    if (rkCFGRemove(kStore, arguments[0], arguments[1]) != 0)
        return saved(true);
    const bool there = readText(arguments[0], arguments[1], text) ||
                       rkCFGValueDword(kStore, arguments[0], arguments[1], &number, 0) == 0;
    return there ? fail("the value could not be removed") : absentOrFailed(arguments[0]);
}

int listEntry(void *, const char *path, const char *name, const char *text, uint32_t size, uint32_t number)
{
    printf("%s\t%s\t", path, name);
    if (text != nullptr)
        print({text, size - 1});
    else
        printf("%u", number);
    print("\n");
    return 0;
}

int list(const Arguments &arguments)
{
    if (rkCFGForEach(kStore, arguments.empty() ? nullptr : arguments[0], listEntry, nullptr) != 0)
        return fail("the store cannot be read");
    return finish(Done);
}

// One word of a shell command line, whatever bytes the text holds.
std::string quoted(std::string_view text)
{
    std::string word("'");
    for (const char c : text) {
        if (c == '\'')
            word += "'\\''";
        else
            word += c;
    }
    return word + '\'';
}

int dumpEntry(void *, const char *path, const char *name, const char *text, uint32_t size, uint32_t number)
{
    const std::string key = quoted(path) + ' ' + quoted(name) + ' ';
    if (text != nullptr)
        print("rkcfg set -- " + key + quoted({text, size - 1}) + '\n');
    else
        print("rkcfg set-dword -- " + key + std::to_string(number) + '\n');
    return 0;
}

int dump(const Arguments &)
{
    if (rkCFGForEach(kStore, nullptr, dumpEntry, nullptr) != 0)
        return fail("the store cannot be read");
    return finish(Done);
}

std::string defaultName()
{
    char name[128] = "";
    rkCFGGetDefaultName(name, sizeof name);
    return name;
}

std::vector<std::string> configurationNames()
{
    static constexpr std::string_view kSuffix = ".rkcfg";
    char folder[4096] = "";
    rkOSGetConfigDir(folder);
    std::vector<std::string> names{defaultName()};
    const std::unique_ptr<DIR, int (*)(DIR *)> stream(opendir(folder), closedir);
    while (const dirent *entry = stream ? readdir(stream.get()) : nullptr) {
        const std::string_view file(entry->d_name);
        if (file.size() > kSuffix.size() && file.front() != '.' &&
            file.substr(file.size() - kSuffix.size()) == kSuffix)
            names.emplace_back(file.substr(0, file.size() - kSuffix.size()));
    }
    std::sort(names.begin(), names.end());
    names.erase(std::unique(names.begin(), names.end()), names.end());
    return names;
}

int configs(const Arguments &)
{
    for (const std::string &name : configurationNames())
        print(name + '\n');
    return finish(Done);
}

int defaultCommand(const Arguments &arguments)
{
    if (!arguments.empty())
        return rkCFGSetDefaultName(arguments[0]) == 0 ? Done : fail("the default was not changed");
    print(defaultName() + '\n');
    return finish(Done);
}

int help(const Arguments &);

int version(const Arguments &)
{
    print("rkcfg " RKCFG_TOOL_VERSION "\n");
    return finish(Done);
}

struct Command {
    const char *name;
    size_t fewest;
    size_t most;
    int (*run)(const Arguments &);
    const char *usage; // null: not shown in the list
};

// clang-format off
const Command kCommands[] = {
    // name        fewest  most  runs             shown as
    {"get",        2,      2,    get,             "get PATH NAME           print a value"},
    {"set",        3,      3,    set,             "set PATH NAME VALUE     store a value as what it has to be: text or number"},
    {"set-text",   3,      3,    setText,         "set-text PATH NAME TEXT store a text"},
    {"set-dword",  3,      3,    setDword,        "set-dword PATH NAME N   store a number, 0 to 4294967295"},
    {"unset",      2,      2,    unset,           "unset PATH NAME         remove a value"},
    {"list",       0,      1,    list,            "list [PATH]             path, name and value per line, tab between"},
    {"dump",       0,      0,    dump,            "dump                    the same as commands that store them again"},
    {"configs",    0,      0,    configs,         "configs                 the named configurations"},
    {"default",    0,      1,    defaultCommand,  "default [NAME]          print or choose the default configuration"},
    {"--help",     0,      0,    help,            nullptr},
    {"-h",         0,      0,    help,            nullptr},
    {"--version",  0,      0,    version,         nullptr},
};
// clang-format on

void printUsage(FILE *stream)
{
    fputs("Usage: rkcfg COMMAND [ARGUMENT...]\n\n", stream);
    for (const Command &command : kCommands) {
        if (command.usage != nullptr)
            fprintf(stream, "  rkcfg %s\n", command.usage);
    }
    fputs("\nWorks on the default configuration. Exit status: 0 done, 1 no such value, 2 wrong usage, 3 "
          "failed.\n",
          stream);
}

int help(const Arguments &)
{
    printUsage(stdout);
    return finish(Done);
}

const Command *findCommand(std::string_view name)
{
    const auto *const end = std::end(kCommands);
    const auto *const at =
        std::find_if(std::begin(kCommands), end, [&](const Command &c) { return name == c.name; });
    return at == end ? nullptr : at;
}

bool takeFirst(Arguments &arguments, const char *word)
{
    if (arguments.empty() || strcmp(arguments[0], word) != 0)
        return false;
    arguments.erase(arguments.begin());
    return true;
}

} // namespace

int main(int argc, char **argv)
{
    Arguments arguments(argv + std::min(argc, 2), argv + argc);
    // Only directly after the command: a text may begin with a dash as well.
    arguments.force = takeFirst(arguments, "--force");
    arguments.literal = takeFirst(arguments, "--");
    const Command *command = argc > 1 ? findCommand(argv[1]) : nullptr;
    if (command == nullptr || arguments.size() < command->fewest || arguments.size() > command->most) {
        printUsage(stderr);
        return Usage;
    }
    const int result = command->run(arguments);
    // Leaves no log behind when nobody else has the store open.
    rkCFGClose(kStore, 0);
    return result;
}
