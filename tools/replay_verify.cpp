// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// Each file is judged by a process of its own: the game's random numbers come from one generator
// per process, and a recording that breaks the simulation takes no other file's verdict with it.
// Starting a process costs a fiftieth of playing a game.

#include "replay_verify.h"

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <deque>
#include <iterator>
#include <new>

#include "json_writer.h"
#include "replay_run.h"

namespace {

// The numbers are the exit statuses of the judging processes.
enum verdict {
    VERDICT_OK,
    VERDICT_BAD_SIGNATURE,
    VERDICT_UNFINISHED,
    VERDICT_WRONG_SCORE,
    VERDICT_IMPOSSIBLE,
    VERDICT_BROKEN,
    VERDICT_CRASHED,
    VERDICT_UNREADABLE,
    VERDICT_COUNT
};
constexpr const char* VERDICT_NAMES[] = {"ok",         "bad-signature", "unfinished", "wrong-score",
                                         "impossible", "broken",        "crashed",    "unreadable"};
static_assert(std::size(VERDICT_NAMES) == VERDICT_COUNT);

// --- One file -------------------------------------------------------------------------------

// A line of cells: the verdict, the file, and what else is to say as KEY=TEXT.
std::string verdict_line(verdict verdict, const std::string& path, const report& details) {
    std::string line =
        joined({VERDICT_NAMES[verdict], printable(path), details.text("=", "\t")}, "\t");
    line.back() = '\n';
    return line;
}

// What is printed for a file that was not judged: a line, and behind a zero byte the reason for
// standard error.
std::string failure(verdict verdict, const std::string& path, const std::string& reason,
                    bool json) {
    report report;
    report.add("file", "", json_string(path));
    report.add("verdict", "", json_string(VERDICT_NAMES[verdict]));
    report.add("error", reason);
    return (json ? report.json() : verdict_line(verdict, path, report)) + '\0' + reason;
}

verdict judge(const std::string& path, const verify_options& options, std::string* result) {
    recording log;
    std::string reason;
    const load_status status = recording_load(path, &log, &reason);
    if (status != LOAD_OK) {
        const verdict verdict = status == LOAD_BROKEN ? VERDICT_BROKEN : VERDICT_UNREADABLE;
        *result = failure(verdict, path, reason, options.json);
        return verdict;
    }
    playback run(log);
    while (run.step()) {
    }
    if (run.end == RUN_FRAME_LIMIT) {
        log.impossible.push_back({"more frames than a game can have", 1, run.events - 1});
    }
    if (run.end == RUN_SELF && run.events < log.event_count) {
        log.impossible.push_back(
            {"an event after the game's end", log.event_count - run.events, run.events});
    }
    const bool is_signed = signature_is_right(&log, options.salt);
    const bool before = log.score == static_cast<uint32_t>(run.score_before);
    const bool after = log.score == static_cast<uint32_t>(run.score());
    verdict verdict = is_signed ? VERDICT_OK : VERDICT_BAD_SIGNATURE;
    if (!log.impossible.empty()) {
        verdict = VERDICT_IMPOSSIBLE;
    } else if (!before && !after) {
        verdict = VERDICT_WRONG_SCORE;
    } else if (!before && run.end != RUN_SELF) {
        // A game that ends itself is recorded up to the step that ends it; one that is ended by
        // Escape or by closing the window, up to a frame whose step was left out. So the score
        // before the last step is good, whatever that step does here, but not the one after a
        // step behind which the game goes on.
        verdict = VERDICT_UNFINISHED;
    }

    const auto reasons = in_words(log.impossible);
    const auto remarks = in_words(log.remarks);
    report report;
    report.add("file", "", json_string(path));
    report.add("verdict", "", json_string(VERDICT_NAMES[verdict]));
    report.add("score", int64_t{log.score});
    report.add("before", run.score_before);
    report.add("after", run.score());
    report.add("matched", before && after ? "both" : before ? "before" : after ? "after" : "none");
    report.add("end", RUN_END_NAMES[run.end]);
    report.add("frames", static_cast<int64_t>(run.frames));
    report.add("time", run.game->time);
    report.add("signature", is_signed ? "right" : "wrong");
    report.add("reasons", joined(reasons, ", "), json_list(reasons));
    report.add("remarks", joined(remarks, ", "), json_list(remarks));
    *result = options.json ? report.json() : verdict_line(verdict, path, report);
    return verdict;
}

// --- The names ------------------------------------------------------------------------------

class name_source {
public:
    explicit name_source(const verify_options& given) : options(given) {}

    // False if there is none now.
    bool next(std::string* name) {
        if (!options.names_from_stdin) {
            const bool found = given_out < options.files.size();
            *name = found ? options.files[given_out++] : "";
            return found;
        }
        do {
            const size_t end = std::min(buffer.find(options.name_end), LONGEST_NAME);
            if (buffer.empty() || (end >= buffer.size() && !ended)) {
                return false;
            }
            *name = buffer.substr(0, end);
            buffer.erase(0, name->size() + 1);
        } while (name->empty());
        return true;
    }

    bool waits() const { return options.names_from_stdin && !ended; }

    void read_some() {
        char chunk[4096];
        const ssize_t count = read(STDIN_FILENO, chunk, sizeof(chunk));
        if (count < 0 && (errno == EINTR || errno == EAGAIN)) {
            return;
        }
        if (count < 0) {
            failed = complain("standard input", std::strerror(errno)) != 0;
        }
        buffer.append(chunk, static_cast<size_t>(std::max<ssize_t>(count, 0)));
        ended = count <= 0;
    }

    bool has_failed() const { return failed; }

private:
    static constexpr size_t LONGEST_NAME = 65536;  // longer than any system's

    const verify_options& options;
    size_t given_out = 0;
    std::string buffer;
    bool ended = false;
    bool failed = false;
};

// --- All files ------------------------------------------------------------------------------

// A bar on standard error, if that is a terminal and the run a long one.
class progress_bar {
public:
    static constexpr int INTERVAL = 250;  // ms

    void show(size_t done, size_t known) {
        const auto now = std::chrono::steady_clock::now();
        if (on_terminal && now >= next) {
            constexpr size_t WIDTH = 40;
            const std::string bar(known == 0 ? 0 : done * WIDTH / known, '#');
            std::fprintf(stderr, "\r[%-40s] %zu of %zu", bar.c_str(), done, known);
            next = now + std::chrono::milliseconds(INTERVAL);
            visible = true;
        }
    }

    // Takes the bar away, so that lines can be printed.
    void clear() {
        if (visible) {
            std::fputs("\r\033[K", stderr);
            visible = false;
        }
    }

private:
    bool on_terminal = isatty(STDERR_FILENO) == 1;
    bool visible = false;
    std::chrono::steady_clock::time_point next =
        std::chrono::steady_clock::now() + std::chrono::seconds(1);
};

struct job {
    std::string name;
    pid_t process;
    int pipe;  // that the result comes through; -1 when it is here
    int verdict;
    std::string result;
};

class verification {
public:
    explicit verification(const verify_options& given) : options(given), names(given) {}

    int run() {
        std::string name;
        while (true) {
            bool has_room = true;
            while (has_room && running < options.jobs && window.size() < WINDOW_LIMIT &&
                   (!name.empty() || names.next(&name))) {
                has_room = start(name);
                if (has_room) {
                    name.clear();
                }
            }
            if ((window.empty() && !names.waits()) || std::ferror(stdout) != 0) {
                break;
            }
            await();
            print_ready();
        }
        if (!options.json) {
            std::printf("summary\t%zu files\t", printed);
            for (size_t i = 0; i < VERDICT_COUNT; ++i) {
                std::printf("%s%s=%zu", i == 0 ? "" : " ", VERDICT_NAMES[i], counts[i]);
            }
            std::puts("");
        }
        return counts[VERDICT_UNREADABLE] > 0 || names.has_failed() ? 2
               : counts[VERDICT_OK] < printed                       ? 1
                                                                    : 0;
    }

private:
    // Verdicts that wait for an earlier one; a limit, in case that one takes long.
    static constexpr size_t WINDOW_LIMIT = 10000;

    // False if the system has no room for one more process while others run: later, then.
    bool start(const std::string& name) {
        int ends[2] = {-1, -1};
        const pid_t process = pipe(ends) == 0 ? fork() : -1;
        if (process == 0) {
            judge_and_exit(name, ends[1]);
        }
        const int error = errno;
        close(ends[1]);
        if (process < 0 && running > 0) {
            close(ends[0]);
            return false;
        }
        window.push_back({name, process, ends[0], VERDICT_CRASHED, ""});
        ++running;
        if (process < 0) {
            finish(&window.back(), std::strerror(error));
        }
        return true;
    }

    // In the process of its own.
    [[noreturn]] void judge_and_exit(const std::string& name, int pipe) const {
        for (const job& other : window) {
            close(other.pipe);
        }
        std::string result;
        verdict verdict = VERDICT_UNREADABLE;
        try {
            verdict = judge(name, options, &result);
        } catch (const std::bad_alloc&) {
            result = failure(verdict, name, "there is not enough memory for it", options.json);
        }
        const ssize_t written = write(pipe, result.data(), result.size());
        _exit(written == static_cast<ssize_t>(result.size()) ? verdict : VERDICT_CRASHED);
    }

    // Waits for a result, or for names if there is somebody to take them.
    void await() {
        std::vector<pollfd> events;
        std::vector<job*> jobs;
        for (job& job : window) {
            if (job.pipe >= 0) {
                events.push_back({job.pipe, POLLIN, 0});
                jobs.push_back(&job);
            }
        }
        const bool wants_names = names.waits() && running < options.jobs;
        events.push_back({wants_names ? STDIN_FILENO : -1, POLLIN, 0});
        poll(events.data(), static_cast<nfds_t>(events.size()), progress_bar::INTERVAL);
        for (size_t i = 0; i < jobs.size(); ++i) {
            if (events[i].revents != 0) {
                finish(jobs[i]);
            }
        }
        if (events.back().revents != 0) {
            names.read_some();
        }
    }

    void finish(job* job, const char* start_error = nullptr) {
        char chunk[4096];
        for (ssize_t count = 0; (count = read(job->pipe, chunk, sizeof(chunk))) > 0;) {
            job->result.append(chunk, static_cast<size_t>(count));
        }
        close(job->pipe);
        job->pipe = -1;
        --running;
        int status = 0;
        if (start_error == nullptr) {
            waitpid(job->process, &status, 0);
        }
        if (WIFEXITED(status) && WEXITSTATUS(status) < VERDICT_COUNT && !job->result.empty()) {
            job->verdict = WEXITSTATUS(status);
            return;
        }
        const char* const how = start_error != nullptr ? start_error
                                : WIFSIGNALED(status)  ? strsignal(WTERMSIG(status))
                                                       : "gave no verdict";
        job->result = failure(VERDICT_CRASHED, job->name,
                              std::string("the process that judged it: ") + how, options.json);
    }

    void print_ready() {
        for (; !window.empty() && window.front().pipe == -1; window.pop_front(), ++printed) {
            const job& job = window.front();
            progress.clear();
            ++counts[job.verdict];
            std::fputs(job.result.c_str(), stdout);  // up to the zero byte
            std::fflush(stdout);
            const size_t end = job.result.find('\0');
            if (end != std::string::npos) {
                complain(job.name, job.result.substr(end + 1));
            }
        }
        progress.show(printed, std::max(options.files.size(), printed + window.size()));
    }

    const verify_options& options;
    name_source names;
    std::deque<job> window;  // names handed out whose verdict is not printed
    size_t running = 0;
    size_t printed = 0;
    size_t counts[VERDICT_COUNT] = {};
    progress_bar progress;
};

}  // namespace

int verify_files(const verify_options& options) { return verification(options).run(); }
