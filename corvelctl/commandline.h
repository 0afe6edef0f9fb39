// SPDX-License-Identifier: MIT
//
// The commands and what stands behind their names: words and options, each bound to a member of the command's
// own struct, which is filled before the command runs. CLI11 reads the line; commandline.cpp, main and the
// completion alone see its header, because it costs every file that does ten seconds of compiling.
#ifndef CORVELCTL_COMMANDLINE_H
#define CORVELCTL_COMMANDLINE_H

#include <functional>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
} // namespace CLI

// A word or option that was declared. What breaks one of its rules is wrong use: exit status 2, and a message
// that names it.
class Argument {
public:
    explicit Argument(CLI::Option *option) : m_option(option) {}

    Argument &required();
    Argument &positive(); // a number above 0
    Argument &within(int least, int most);
    Argument &oneOf(const std::vector<std::string> &words);
    Argument &notEmpty();    // a shell variable that was never set is a slip, not "left out"
    Argument &withCommas();  // several values in one word
    Argument &oneEachTime(); // so that other words may follow its value
    Argument &notTogetherWith(const Argument &other);

private:
    CLI::Option *m_option;
};

// A command. Copies stand for the same one, which lives as long as the whole command line.
class Command {
public:
    explicit Command(CLI::App &app) : m_app(&app) {}

    // A name without dashes is that of a word; a list takes all that follow.
    Argument option(const char *name, std::string &value, const char *help);
    Argument option(const char *name, std::vector<std::string> &values, const char *help);
    Argument option(const char *name, int &value, const char *help);
    Argument option(const char *name, long long &value, const char *help);
    Argument flag(const char *name, bool &value, const char *help);

    // A command below this one.
    Command add(const char *name, const char *does, const char *example);
    // One that does nothing by itself: a command below it has to follow.
    Command addGroup(const char *name, const char *does);
    // A command of another program: whatever follows its name goes to that, unread.
    void addHandedOn(const char *name, const char *does, const char *example,
                     const std::function<void(const std::vector<std::string> &)> &run);
    // Runs when this command was named, and none below it.
    void whenNamed(const std::function<void()> &run);

private:
    CLI::App *m_app;
};

#endif
