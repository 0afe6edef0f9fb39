#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# commit_msg.sh SCRIPT FOLDER: which commit messages tools/commit-msg takes and which not, from a file and from the history.
set -u
script=$1
work=$2
bad=0
rm -rf "$work" && mkdir -p "$work" && cd "$work" || exit 1
export GIT_CONFIG_GLOBAL=/dev/null GIT_CONFIG_SYSTEM=/dev/null GIT_CEILING_DIRECTORIES=${work%/*}
export GIT_AUTHOR_NAME=a GIT_AUTHOR_EMAIL=a@b GIT_COMMITTER_NAME=a GIT_COMMITTER_EMAIL=a@b
unset GIT_DIR GIT_WORK_TREE GIT_INDEX_FILE

# expect CODE WHAT COMMAND...
expect() {
  local code=$1 what=$2
  shift 2
  "$@" >"$work/output" 2>&1
  local got=$?
  [ "$got" = "$code" ] && return 0
  echo "$what: ended with $got, not $code"
  cat "$work/output"
  bad=1
}

# message CODE WHAT TEXT: the verdict on this message.
message() {
  printf '%b' "$3" >"$work/message"
  expect "$1" "$2" "$script" "$work/message"
}

long=$(printf 'x%.0s' {1..60})
message 0 "subject and reason" 'app: mend the clock\n\nIt stood still.\n'
message 0 "area of two words" 'tests/app, docs: mend the clock\n\nIt stood still.\n'
message 0 "72 characters" "app: mend $long""12\n\nIt is long.\n"
message 1 "73 characters" "app: mend $long""123\n\nIt is too long.\n"
message 1 "no area" 'mend the clock\n\nIt stood still.\n'
message 1 "no blank behind the area" 'app:mend the clock\n\nIt stood still.\n'
message 1 "area in capitals" 'App: mend the clock\n\nIt stood still.\n'
message 1 "no subject" '\n\nIt stood still.\n'
message 1 "past tense" 'app: mended the clock\n\nIt stood still.\n'
message 1 "participle" 'app: mending the clock\n\nIt stood still.\n'
message 1 "a state" 'app: the clock ticks\n\nIt stood still.\n'
message 0 "a verb that looks like a past" 'app: embed the clock\n\nIt stood apart.\n'
message 1 "no body" 'app: mend the clock\n'
message 1 "body directly below" 'app: mend the clock\nIt stood still.\n'
message 1 "a signature is no reason" 'app: mend the clock\n\nSigned-off-by: a <a@b>\n'
message 1 "comments are no reason" 'app: mend the clock\n\n# Please enter the commit message\n'
message 1 "the shown change is no reason" 'app: mend the clock\n\n# ------------------------ >8 ------------------------\ndiff\n'
message 0 "comment above" '# a comment\napp: mend the clock\n\nIt stood still.\n'
message 0 "a fixup is melted in later" 'fixup! app: mend the clock\n'
message 0 "a merge has git'\''s words" "Merge branch 'clock'\n"
expect 2 "no file" "$script"
expect 0 "help" "$script" --help

# The history: left out without one, and where it does not reach back.
expect 0 "no repository" "$script" --log
grep -q 'no git history' "$work/output" || { echo "does not say that there is no history"; bad=1; }
git init -q "$work/clone" && cd "$work/clone" || exit 1
git commit -q --allow-empty -m 'Anything at all'
expect 0 "a history without the first commit" "$script" --log
grep -q 'does not reach back' "$work/output" || { echo "does not say that it looked at nothing"; bad=1; }
first=$(git rev-parse HEAD)
sed "s/^base=.*/base=$first/" "$script" >"$work/here" && chmod +x "$work/here"
expect 0 "nothing since" "$work/here" --log
git commit -q --allow-empty -m 'app: mend the clock' -m 'It stood still.'
expect 0 "a good one since" "$work/here" --log
git checkout -q -b side && git commit -q --allow-empty -m 'app: add a side' -m 'There was none.' && git checkout -q -
git commit -q --allow-empty -m 'app: add a front' -m 'There was none.'
git merge -q --no-ff side -m 'Whatever a merge says'
expect 0 "merges are left out" "$work/here" --log
git commit -q --allow-empty -m 'Bad one'
expect 1 "a bad one since" "$work/here" --log

# The hook: put in when asked for, and never over another.
expect 0 "installs itself" "$script" --install
expect 0 "twice is no harm" "$script" --install
expect 1 "the hook refuses" git commit -q --allow-empty -m 'Bad one'
expect 0 "the hook accepts" git commit -q --allow-empty -m 'app: mend the clock' -m 'It stood still.'
rm .git/hooks/commit-msg && echo 'exit 0' >.git/hooks/commit-msg
expect 1 "another hook stays" "$script" --install
grep -qx 'exit 0' .git/hooks/commit-msg || { echo "the other hook is gone"; bad=1; }
exit $bad
