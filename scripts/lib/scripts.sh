# shellcheck shell=bash
# What of the tree is a script. Sourced, not run.

# shell_scripts: prints the files of the tree that a shell runs or reads, one a line.
shell_scripts() {
    git grep -lI -E '^(#!/bin/(ba)?sh|# shellcheck shell=)' -- . | sort
}
