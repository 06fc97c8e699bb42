// Runs work in a forked child process, so that a crash, a hang or a leak of
// the library becomes a verdict (or a note) instead of ending the caller.

#include "booleanoracle.h"

#include <QtCore/QElapsedTimer>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#if defined(__SANITIZE_ADDRESS__)
#define RVORACLE_LEAK_CHECK 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define RVORACLE_LEAK_CHECK 1
#endif
#endif
#ifdef RVORACLE_LEAK_CHECK
#include <sanitizer/lsan_interface.h>
#endif

namespace rvOracle {

static bool writeAll(int fd, const QByteArray &bytes)
{
    qint64 done = 0;
    while (done < bytes.size()) {
        const ssize_t n = ::write(fd, bytes.constData() + done, size_t(bytes.size() - done));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        done += n;
    }
    return true;
}

QString ChildRun::crashText() const
{
    return QStringLiteral("crashed with signal %1 (%2)")
            .arg(signal)
            .arg(QString::fromLocal8Bit(strsignal(signal)));
}

ChildRun runInChild(const std::function<QByteArray()> &work, int timeoutMs)
{
    ChildRun run;
    int fds[2];
    if (::pipe(fds) != 0) {
        run.error = QStringLiteral("pipe() failed: %1")
                            .arg(QString::fromLocal8Bit(std::strerror(errno)));
        return run;
    }
    std::fflush(stdout);
    std::fflush(stderr);
    const pid_t pid = ::fork();
    if (pid < 0) {
        ::close(fds[0]);
        ::close(fds[1]);
        run.error = QStringLiteral("fork() failed");
        return run;
    }
    if (pid == 0) {
        ::close(fds[0]);
        const bool sent = writeAll(fds[1], work());
        ::close(fds[1]);
        int code = sent ? 0 : 2;
#ifdef RVORACLE_LEAK_CHECK
        if (__lsan_do_recoverable_leak_check())
            code = ChildLeaked;
#endif
        std::fflush(stdout);
        std::fflush(stderr);
        ::_exit(code);
    }

    run.started = true;
    ::close(fds[1]);
    QElapsedTimer timer;
    timer.start();
    for (int guard = 0; guard < 1000000; ++guard) {
        const qint64 left = timeoutMs - timer.elapsed();
        if (left <= 0) {
            run.timedOut = true;
            break;
        }
        pollfd p{fds[0], POLLIN, 0};
        const int ready = ::poll(&p, 1, int(left));
        if (ready < 0 && errno == EINTR)
            continue;
        if (ready <= 0) {
            run.timedOut = ready == 0;
            break;
        }
        char buffer[65536];
        const ssize_t n = ::read(fds[0], buffer, sizeof buffer);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            break; // end of the message: the child closed its end
        run.message.append(buffer, int(n));
    }
    ::close(fds[0]);
    if (run.timedOut)
        ::kill(pid, SIGKILL);
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    if (WIFSIGNALED(status))
        run.signal = WTERMSIG(status);
    if (WIFEXITED(status))
        run.exitCode = WEXITSTATUS(status);
    return run;
}

Verdict checkIsolated(const Case &c, const Options &options)
{
    const ChildRun run =
            runInChild([&] { return check(c, options).serialize(); }, options.timeoutMs);
    if (!run.started)
        return check(c, options);
    Verdict v;
    if (run.timedOut) {
        v.status = Status::TimedOut;
        v.reason = QStringLiteral("no result within %1 ms").arg(options.timeoutMs);
    } else if (run.signal) {
        v.status = Status::Crashed;
        v.reason = run.crashText();
    } else if (!Verdict::deserialize(run.message, &v)) {
        v = Verdict();
        v.status = Status::Crashed;
        v.reason = QStringLiteral("the child ended with status %1 without a verdict")
                           .arg(run.exitCode);
    } else if (run.exitCode == ChildLeaked) {
        v.status = Status::Failed;
        v.reason = QStringLiteral("memory leaked (leak report above); ") + v.reason;
    }
    if (v.status == Status::Crashed || v.status == Status::TimedOut || !v.passed())
        if (v.repro.isEmpty())
            v.repro = reproducer(c);
    return v;
}

} // namespace rvOracle
