// SPDX-License-Identifier: MIT
#include "corvelctl/options.h"

void addCommonOptions(CLI::App &app, Context &context)
{
    Output &out = context.out;
    app.add_flag_callback(
        "--json", [&out] { out.form = Output::Form::Document; }, "One JSON document as result");
    app.add_flag_callback(
        "--lines", [&out] { out.form = Output::Form::Lines; }, "One JSON object per line");
    app.add_flag("-n,--dry-run", context.dryRun, "Only print what would change");
    app.add_flag("-y,--yes", context.yes, "Do not ask");
    app.add_flag("-q,--quiet", out.quiet, "No notes, only errors");
}
