// SPDX-License-Identifier: MIT
// A process with the store open that does what its standard input says, one answer line per command:
//   get P N | set P N T | getn P N | setn P N V | save | close | default [NAME] | unprivileged
//   begin | end KEEP
// With the argument "transactions" it writes a growing number under 200 names at a time.
// With the argument "notes" it writes a growing number as a value and as two notes at a time.
// With the argument "count" it writes a growing number as fast as it can and prints each one as soon
// as the write has returned, until it is killed.
#include "rkcfg.h"

#include <cstdio>
#include <iostream>
#include <linux/capability.h>
#include <map>
#include <sstream>
#include <string>
#include <sys/syscall.h>
#include <unistd.h>
#include <vector>

namespace {

using Words = std::vector<std::string>;

void *const store = RKCFG_DEFAULT_STORE;

std::string get(const Words &words)
{
    std::string buffer(4096, '\0');
    auto size = static_cast<uint32_t>(buffer.size());
    if (rkCFGValueString(store, words[1].c_str(), words[2].c_str(), buffer.data(), &size, 0) != 0)
        return "absent";
    return "=" + buffer.substr(0, size - 1);
}

std::string set(const Words &words)
{
    std::string text(words[3]);
    auto size = static_cast<uint32_t>(text.size() + 1);
    return std::to_string(rkCFGValueString(store, words[1].c_str(), words[2].c_str(), text.data(), &size, 1));
}

std::string getNumber(const Words &words)
{
    uint32_t value = 0;
    if (rkCFGValueDword(store, words[1].c_str(), words[2].c_str(), &value, 0) != 0)
        return "absent";
    return "=" + std::to_string(value);
}

std::string setNumber(const Words &words)
{
    auto value = static_cast<uint32_t>(std::stoul(words[3]));
    return std::to_string(rkCFGValueDword(store, words[1].c_str(), words[2].c_str(), &value, 1));
}

std::string save(const Words &)
{
    return std::to_string(rkCFGSave(store, nullptr, 0));
}

std::string close(const Words &)
{
    return std::to_string(rkCFGClose(store, 1));
}

std::string defaultName(const Words &words)
{
    if (words.size() > 1)
        return std::to_string(rkCFGSetDefaultName(words[1].c_str()));
    char name[128] = "";
    rkCFGGetDefaultName(name, sizeof name);
    return name;
}

std::string begin(const Words &)
{
    return std::to_string(rkCFGBegin(store));
}

std::string end(const Words &words)
{
    return std::to_string(rkCFGEnd(store, std::stoi(words[1])));
}

// The superuser passes every permission bit; without capabilities it does not.
std::string unprivileged(const Words &)
{
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct none[2]{};
    return std::to_string(syscall(SYS_capset, &header, none));
}

[[noreturn]] void count()
{
    for (uint32_t n = 1;; ++n) {
        rkCFGValueDword(store, "Count", "n", &n, 1);
        printf("%u\n", n);
        fflush(stdout);
    }
}

[[noreturn]] void transactions()
{
    uint32_t n = 0;
    rkCFGValueDword(store, "All", "0", &n, 0);
    for (;;) {
        ++n;
        rkCFGBegin(store);
        for (int i = 0; i < 200; ++i)
            rkCFGValueDword(store, "All", std::to_string(i).c_str(), &n, 1);
        rkCFGEnd(store, 1);
        puts("done");
        fflush(stdout);
    }
}

void note(const char *key, const std::string &text)
{
    rkCFGSetNote(store, "worker", key, text.data(), static_cast<uint32_t>(text.size()));
}

[[noreturn]] void notes()
{
    uint32_t n = 0;
    rkCFGValueDword(store, "Noted", "n", &n, 0);
    for (;;) {
        ++n;
        rkCFGBegin(store);
        note("n", std::to_string(n));
        rkCFGValueDword(store, "Noted", "n", &n, 1);
        note("m", std::to_string(n));
        rkCFGEnd(store, 1);
        puts("done");
        fflush(stdout);
    }
}

} // namespace

int main(int argc, char **argv)
{
    if (argc > 1 && std::string(argv[1]) == "count")
        count();
    if (argc > 1 && std::string(argv[1]) == "transactions")
        transactions();
    if (argc > 1 && std::string(argv[1]) == "notes")
        notes();
    static const std::map<std::string, std::pair<size_t, std::string (*)(const Words &)>> commands = {
        {"get", {3, get}},
        {"set", {4, set}},
        {"getn", {3, getNumber}},
        {"setn", {4, setNumber}},
        {"save", {1, save}},
        {"close", {1, close}},
        {"begin", {1, begin}},
        {"end", {2, end}},
        {"default", {1, defaultName}},
        {"unprivileged", {1, unprivileged}},
    };
    for (std::string line; std::getline(std::cin, line);) {
        std::istringstream stream(line);
        Words words;
        for (std::string word; stream >> word;)
            words.push_back(word);
        const auto command = words.empty() ? commands.end() : commands.find(words[0]);
        const bool known = command != commands.end() && words.size() >= command->second.first;
        std::cout << (known ? command->second.second(words) : "?") << std::endl;
    }
    return 0;
}
