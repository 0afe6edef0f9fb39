// SPDX-License-Identifier: MIT
// corvel-fleet: the service, and its commands for people. docs/corvel-fleet.1 is the manual.
#include "fleet/service/config.h"
#include "fleet/service/service.h"
#include "rkos.h"

#include <CLI/CLI.hpp>

#include <QCoreApplication>

namespace {

int run(int argc, char **argv)
{
    CLI::App app(
        "Keeps this machine's settings and the site's equal, and shows and changes those of many servers.",
        "corvel-fleet");
    std::string file;
    app.set_version_flag("--version", "corvel-fleet " CORVEL_VERSION);
    app.require_subcommand(1);
    app.fallthrough();
    app.add_option("--file", file, "The configuration file, when it is not the usual one");
    CLI::App *service = app.add_subcommand("run", "The service itself, until SIGTERM");
    CLI11_PARSE(app, argc, argv);
    const QByteArray config = file.empty() ? fleet::usualConfigFile() : QByteArray::fromStdString(file);
    return service->parsed() ? fleet::runService(config) : 0;
}

} // namespace

int main(int argc, char **argv)
{
    ErrLogSetFileName("corvel-fleet");
    const QCoreApplication application(argc, argv);
    return run(argc, argv);
}
