#pragma once

// Permissions do not bind root, and the tests may well run as root (in a
// container, on a build machine). A test of what a read-only file or folder
// refuses runs its check through AsUnprivileged.

#include <functional>
#include <optional>
#include <string>

#include <gtest/gtest.h>

namespace vliptc::test {

// Runs check as a user without rights to the test's files and returns its
// result: in this process when it is not root's, else in a child process
// that has given up root for the user and group "nobody" (65534); nothing
// when root cannot be given up here. The folders on the way to the files
// the check uses must let others in (OpenToOthers).
std::optional<bool> AsUnprivileged(const std::function<bool()>& check);

// Lets every user enter and list the folder (mode 0755).
void OpenToOthers(const std::string& folder);

}  // namespace vliptc::test

// Expects check (a callable returning bool) to hold for an unprivileged
// user; skips the rest of the test where root cannot be given up.
#define VLIPTC_EXPECT_AS_UNPRIVILEGED(check)                                                \
    do {                                                                                    \
        const std::optional<bool> held_ = ::vliptc::test::AsUnprivileged(check);            \
        if (!held_) GTEST_SKIP() << "the tests run as root, and root cannot be given up here"; \
        EXPECT_TRUE(*held_) << #check;                                                      \
    } while (false)
