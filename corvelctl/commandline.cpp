// SPDX-License-Identifier: MIT
#include "corvelctl/commandline.h"

#include <CLI/CLI.hpp>

#include <limits>

Argument &Argument::required()
{
    m_option->required();
    return *this;
}

Argument &Argument::positive()
{
    return within(1, std::numeric_limits<int>::max());
}

Argument &Argument::within(int least, int most)
{
    m_option->check(CLI::Range(least, most));
    return *this;
}

Argument &Argument::oneOf(const std::vector<std::string> &words)
{
    m_option->check(CLI::IsMember(words));
    return *this;
}

Argument &Argument::notEmpty()
{
    m_option->check(
        [](const std::string &value) { return std::string(value.empty() ? "an empty word" : ""); });
    return *this;
}

Argument &Argument::withCommas()
{
    m_option->delimiter(',');
    return *this;
}

Argument &Argument::oneEachTime()
{
    m_option->allow_extra_args(false);
    return *this;
}

Argument &Argument::notTogetherWith(const Argument &other)
{
    m_option->excludes(other.m_option);
    return *this;
}

Argument Command::option(const char *name, std::string &value, const char *help)
{
    return Argument(m_app->add_option(name, value, help));
}

Argument Command::option(const char *name, std::vector<std::string> &values, const char *help)
{
    return Argument(m_app->add_option(name, values, help));
}

Argument Command::option(const char *name, int &value, const char *help)
{
    return Argument(m_app->add_option(name, value, help));
}

Argument Command::option(const char *name, long long &value, const char *help)
{
    return Argument(m_app->add_option(name, value, help));
}

Argument Command::flag(const char *name, bool &value, const char *help)
{
    return Argument(m_app->add_flag(name, value, help));
}

Command Command::add(const char *name, const char *does, const char *example)
{
    const CLI::App *program = m_app;
    while (program->get_parent())
        program = program->get_parent();
    CLI::App *command = m_app->add_subcommand(name, does);
    command->footer(std::string("Example:\n  ") + example +
                    "\n\nOptions of all commands: " + program->get_name() + " --help");
    return Command(*command);
}

Command Command::addGroup(const char *name, const char *does)
{
    CLI::App *group = m_app->add_subcommand(name, does);
    group->require_subcommand(1);
    return Command(*group);
}

void Command::addHandedOn(const char *name, const char *does, const char *example,
                          const std::function<void(const std::vector<std::string> &)> &run)
{
    CLI::App *command = add(name, does, example).m_app;
    command->fallthrough(false); // its words are not ours
    command->prefix_command();
    command->callback([command, run] { run(command->remaining()); });
}

// "ptp doctor" is not "ptp" as well.
void Command::whenNamed(const std::function<void()> &run)
{
    m_app->callback([command = m_app, run] {
        if (command->get_subcommands().empty())
            run();
    });
}
