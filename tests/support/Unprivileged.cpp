#include "tests/support/Unprivileged.h"

#include <grp.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>

namespace vliptc::test {

namespace {

constexpr uid_t kNobody = 65534;
constexpr int kCannotGiveUpRoot = 2;  // the child's exit status when it keeps root

}  // namespace

std::optional<bool> AsUnprivileged(const std::function<bool()>& check) {
    if (::geteuid() != 0) return check();
    const pid_t child = ::fork();
    if (child < 0) throw std::runtime_error("cannot start a process for an unprivileged check");
    if (child == 0) {
        // The child leaves by _exit: nothing of the test process runs twice.
        if (::setgroups(0, nullptr) != 0 || ::setgid(kNobody) != 0 || ::setuid(kNobody) != 0 ||
            ::geteuid() == 0) {
            ::_exit(kCannotGiveUpRoot);
        }
        ::_exit(check() ? 0 : 1);
    }
    int status = 0;
    while (::waitpid(child, &status, 0) < 0) {
        if (errno != EINTR) throw std::runtime_error("lost the process of an unprivileged check");
    }
    if (WIFEXITED(status) && WEXITSTATUS(status) == kCannotGiveUpRoot) return std::nullopt;
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

void OpenToOthers(const std::string& folder) {
    if (::chmod(folder.c_str(), 0755) != 0) throw std::runtime_error("cannot open " + folder + " to others");
}

}  // namespace vliptc::test
