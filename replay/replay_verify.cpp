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
#include <csignal>
#include <cstdio>
#include <cstring>
#include <deque>
#include <iterator>
#include <new>

#include "game_key.h"
#include "judge.h"
#include "tool.h"

namespace {

// What a file can end with: a verdict, which is also the exit status of the process that judged it,
// or one of two others.
enum outcome : int32_t {
    OUTCOME_CRASHED = VERDICT_BROKEN + 1,
    OUTCOME_UNREADABLE,
    OUTCOME_END,
};

const char* outcome_name(int32_t outcome) {
    return outcome == OUTCOME_CRASHED      ? "crashed"
           : outcome == OUTCOME_UNREADABLE ? "unreadable"
                                           : verdict_name(static_cast<verdict>(outcome));
}

// --- One file -------------------------------------------------------------------------------

// A line of cells: the verdict, the file, and what else is to say as KEY=TEXT.
std::string outcome_line(int32_t outcome, const std::string& path, const report& details) {
    std::string line =
        joined({outcome_name(outcome), printable(path), details.text("=", "\t")}, "\t");
    line.back() = '\n';
    return line;
}

// What is printed for a file that was not judged: a line, and behind a zero byte the reason for
// standard error.
std::string failure(int32_t outcome, const std::string& path, const std::string& reason,
                    bool json) {
    report report;
    report.add("file", "", json_string(path));
    report.add("verdict", "", json_string(outcome_name(outcome)));
    report.add("error", reason);
    return (json ? report.json() : outcome_line(outcome, path, report)) + '\0' + reason;
}

// {"entries":[[TIME,KIND,POINTS],...],"scores":[...]}
std::string json_course(const game_course& course) {
    std::vector<std::string> entries;
    for (const course_entry& entry : course.entries) {
        entries.push_back(
            format("[%d,\"%s\",%d]", entry.time, course_kind_name(entry.kind), entry.points));
    }
    std::vector<std::string> scores;
    for (const int32_t score : course.scores) {
        scores.push_back(std::to_string(score));
    }
    return "{\"entries\":[" + joined(entries, ",") + "],\"scores\":[" + joined(scores, ",") + "]}";
}

void add_played(const judgement& found, const game_result& game, const verify_options& options,
                report* report) {
    const bool before = found.log.score == static_cast<uint32_t>(game.before);
    const bool after = found.log.score == static_cast<uint32_t>(game.after);
    report->add("before", game.before);
    report->add("after", game.after);
    report->add("matched", before && after ? "both" : before ? "before" : after ? "after" : "none");
    report->add("end", run_end_name(game.end));
    report->add("lost_to", "", json_string(game.lost_to));
    report->add("frames", static_cast<int64_t>(game.frames));
    report->add("time", game.time);
    if (options.json && !game.key.empty()) {
        report->add("key", "", json_string(game_key_digest(game.key)));
    }
    if (options.course) {
        report->add("course", "", json_course(game.course));
    }
}

int32_t judge(const std::string& path, const verify_options& options, std::string* result) {
    std::vector<uint8_t> bytes;
    std::string reason;
    const load_status status = recording_file_read(path, &bytes, &reason);
    if (status != LOAD_OK) {
        const int32_t outcome =
            status == LOAD_BROKEN ? VERDICT_BROKEN : int32_t{OUTCOME_UNREADABLE};
        *result = failure(outcome, path, reason, options.json);
        return outcome;
    }
    const judgement found = judge_recording(bytes, {options.salt, options.course});
    if (found.verdict == VERDICT_BROKEN) {
        *result = failure(found.verdict, path, found.error, options.json);
        return found.verdict;
    }
    const auto reasons = in_words(found.log.impossible);
    const auto remarks = in_words(found.log.remarks);
    report report;
    report.add("file", "", json_string(path));
    report.add("verdict", "", json_string(verdict_name(found.verdict)));
    report.add("score", int64_t{found.log.score});
    if (found.played) {
        add_played(found, *found.played, options, &report);
    }
    report.add("signature", found.is_signed ? "right" : "wrong");
    report.add("reasons", joined(reasons, ", "), json_list(reasons));
    report.add("remarks", joined(remarks, ", "), json_list(remarks));
    *result = options.json ? report.json() : outcome_line(found.verdict, path, report);
    return found.verdict;
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
    int outcome;
    std::string result;
};

class verification {
public:
    explicit verification(const verify_options& given) : options(given), names(given) {}

    int run() {
        // Who ignores SIGCHLD, and a program that does hands it on, gets no answer of its children.
        std::signal(SIGCHLD, SIG_DFL);
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
            for (int32_t i = VERDICT_OK; i < OUTCOME_END; ++i) {
                std::printf("%s%s=%zu", i == VERDICT_OK ? "" : " ", outcome_name(i), counts[i]);
            }
            std::puts("");
        }
        return counts[OUTCOME_UNREADABLE] > 0 || names.has_failed() ? 2
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
        window.push_back({name, process, ends[0], OUTCOME_CRASHED, ""});
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
        int32_t outcome = OUTCOME_UNREADABLE;
        try {
            outcome = judge(name, options, &result);
        } catch (const std::bad_alloc&) {
            result = failure(outcome, name, "there is not enough memory for it", options.json);
        }
        for (size_t at = 0; at < result.size();) {
            const ssize_t count = write(pipe, result.data() + at, result.size() - at);
            if (count <= 0) {
                _exit(OUTCOME_CRASHED);
            }
            at += static_cast<size_t>(count);
        }
        _exit(outcome);
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
                take(jobs[i]);
            }
        }
        if (events.back().revents != 0) {
            names.read_some();
        }
    }

    // Takes what there is of a result; at its end, the verdict from the process itself.
    void take(job* job) {
        char chunk[65536];
        const ssize_t count = read(job->pipe, chunk, sizeof(chunk));
        if (count > 0) {
            job->result.append(chunk, static_cast<size_t>(count));
        } else if (count == 0 || errno != EINTR) {
            finish(job);
        }
    }

    void finish(job* job, const char* start_error = nullptr) {
        close(job->pipe);
        job->pipe = -1;
        --running;
        int status = 0;
        pid_t waited = -1;
        while (start_error == nullptr && (waited = waitpid(job->process, &status, 0)) < 0 &&
               errno == EINTR) {
        }
        const bool has_ended = waited == job->process;
        const int outcome = has_ended && WIFEXITED(status) ? WEXITSTATUS(status) : 0;
        if (outcome >= VERDICT_OK && outcome < OUTCOME_END && outcome != OUTCOME_CRASHED &&
            !job->result.empty()) {
            job->outcome = outcome;
            return;
        }
        const char* const how = start_error != nullptr             ? start_error
                                : has_ended && WIFSIGNALED(status) ? strsignal(WTERMSIG(status))
                                                                   : "gave no verdict";
        job->result = failure(OUTCOME_CRASHED, job->name,
                              std::string("the process that judged it: ") + how, options.json);
    }

    void print_ready() {
        for (; !window.empty() && window.front().pipe == -1; window.pop_front(), ++printed) {
            const job& job = window.front();
            progress.clear();
            ++counts[job.outcome];
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
    size_t counts[OUTCOME_END] = {};
    progress_bar progress;
};

}  // namespace

int verify_files(const verify_options& options) { return verification(options).run(); }
