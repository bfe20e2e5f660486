// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// quorvane-replay: looks at recordings of games, judges them and plays them again, without display
// or audio. One row in VERBS for each thing it can do.

#include <getopt.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <new>
#include <optional>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "course.h"
#include "game_key.h"
#include "judge.h"
#include "recording_file.h"
#include "replay_simulate.h"
#include "replay_text.h"
#include "replay_verify.h"
#include "tool.h"

namespace {

struct arguments {
    verify_options common;  // the files and what several verbs take
    bool help = false;
    bool trace = false;
    std::string other;
    std::string salt_file;  // empty: the built-in one
};

struct verb {
    const char* name;
    int (*run)(const arguments& arguments);
    const char* options;  // the codes of those that it takes
    size_t least_files;
    size_t most_files;
    const char* help;
};

constexpr option OPTIONS[] = {
    {"json", no_argument, nullptr, 'j'},
    {"salt-file", required_argument, nullptr, 's'},
    {"jobs", required_argument, nullptr, 'J'},
    {"null", no_argument, nullptr, '0'},
    {"course", no_argument, nullptr, 'c'},
    {"trace", no_argument, nullptr, 't'},
    {"diff", required_argument, nullptr, 'd'},
    {"help", no_argument, nullptr, 'h'},
    {nullptr, 0, nullptr, 0},
};

// Loads a file. Returns an exit status, and the reason is told.
int load_file(const std::string& path, recording_file* file) {
    std::string reason;
    const load_status status = recording_file_load(path, file, &reason);
    return status == LOAD_OK ? 0 : complain(path, reason, status);
}

void describe(const recording_file& file, const verify_options& options) {
    const recording& log = file.log;
    std::vector<std::string> types;
    std::vector<std::string> json_types;
    uint64_t named = 0;
    const auto add_type = [&](const char* name, uint64_t count) {
        types.push_back(name + ('=' + std::to_string(count)));
        json_types.push_back(json_string(name) + ':' + std::to_string(count));
        named += count;
    };
    for (uint32_t type = REPLAY_EVENT_SEED; event_type_name(type) != nullptr; type += 4) {
        add_type(event_type_name(type), log.type_counts[type / 4]);
    }
    add_type("unknown", log.event_count - named);

    report report;
    const std::string created = std::to_string(log.created);
    report.add("file", file.path);
    report.add("size", static_cast<int64_t>(log.bytes.size()));
    report.add("name", '[' + printable(log.name) + ']', json_string(log.name));
    report.add("score", int64_t{log.score});
    report.add("created", created + " (" + utc_time(log.created) + ')', created);
    report.add("date", "", json_string(utc_time(log.created)));
    report.add("duration", static_cast<int64_t>(log.duration));
    report.add("frames", static_cast<int64_t>(log.type_counts[REPLAY_EVENT_TICK / 4]));
    report.add("events", static_cast<int64_t>(log.event_count));
    report.add("types", joined(types, " "), '{' + joined(json_types, ",") + '}');
    report.add("signature", signature_is_right(log, options.salt) ? "right" : "wrong");
    print_report(report, options.json);
}

int run_info(const arguments& arguments) {
    int worst = 0;
    for (const std::string& path : arguments.common.files) {
        recording_file file;
        std::string reason;
        const load_status status = recording_file_load(path, &file, &reason);
        if (status == LOAD_OK) {
            describe(file, arguments.common);
        } else {
            if (arguments.common.json) {
                report report;
                report.add("file", path);
                report.add("error", reason);
                print_report(report, true);
            }
            complain(path, reason);
        }
        std::fflush(stdout);
        worst = std::max<int>(worst, status);
    }
    return worst;
}

int run_verify(const arguments& arguments) {
    verify_options options = arguments.common;
    options.names_from_stdin =
        options.files.empty() || options.files == std::vector<std::string>{"-"};
    if (options.names_from_stdin) {
        options.files.clear();
    }
    return verify_files(options);
}

int run_simulate(const arguments& arguments) {
    recording_file file;
    const int status = load_file(arguments.common.files[0], &file);
    if (status != 0 || !arguments.other.empty()) {
        return status != 0 ? status : simulate_diff(file, arguments.other, arguments.common.json);
    }
    simulate(file, arguments.trace, arguments.common.json);
    return 0;
}

int run_dump(const arguments& arguments) {
    recording_file file;
    const int status = load_file(arguments.common.files[0], &file);
    if (status == 0) {
        dump_recording(file.log);
    }
    return status;
}

int run_key(const arguments& arguments) {
    int worst = 0;
    for (const std::string& path : arguments.common.files) {
        std::vector<uint8_t> bytes;
        std::string reason;
        const load_status status = recording_file_read(path, &bytes, &reason);
        if (status != LOAD_OK) {
            worst = std::max(worst, complain(path, reason, status));
            continue;
        }
        const judgement found = judge_recording(bytes, {});
        if (found.verdict == VERDICT_BROKEN) {
            worst = std::max(worst, complain(path, found.error, LOAD_BROKEN));
        } else if (found.verdict == VERDICT_IMPOSSIBLE) {
            const std::string reasons = joined(in_words(found.log.impossible), ", ");
            worst = std::max(worst, complain(path, "no key, an impossible game: " + reasons, 1));
        } else {
            // As in the lines of verify, a name is one line, whatever its bytes.
            std::printf("%s  %s\n", game_key_digest(found.played->key).c_str(),
                        printable(path).c_str());
            std::fflush(stdout);
        }
    }
    return worst;
}

int run_likeness(const arguments& arguments) {
    recording_file files[2];
    game_course courses[2];
    for (size_t i = 0; i < 2; ++i) {
        const int status = load_file(arguments.common.files[i], &files[i]);
        if (status != 0) {
            return status;
        }
    }
    if (files[0].log.first_seed != files[1].log.first_seed) {
        const auto in_words = [](const std::optional<uint32_t>& seed) {
            return seed ? std::to_string(*seed) : "none";
        };
        return complain(files[1].path,
                        "its seed is " + in_words(files[1].log.first_seed) + ", not " +
                            in_words(files[0].log.first_seed) +
                            ": games with two seeds are not compared",
                        1);
    }
    for (size_t i = 0; i < 2; ++i) {
        courses[i] = course_of(files[i].bytes);
    }
    const std::optional<double> found = likeness(courses[0], courses[1]);
    std::puts(found ? format("%.2f", *found).c_str() : "undefined");
    return 0;
}

int run_pack(const arguments& arguments) {
    return pack_recording(arguments.common.files[0], arguments.common.files[1]);
}

constexpr verb VERBS[] = {
    {"info", run_info, "jsh", 1, SIZE_MAX,
     "Usage: quorvane-replay info [--json] [--salt-file SALT] FILE...\n"
     "Prints what recordings say of themselves, and whether the signature is right. Plays "
     "nothing.\n"
     "  --json            one JSON object a file, on a line\n"
     "  --salt-file SALT  check signatures with the 77 bytes of this file, not the built-in "
     "ones\n"},
    {"verify", run_verify, "jcsJ0h", 0, SIZE_MAX,
     "Usage: quorvane-replay verify [--json [--course]] [--salt-file SALT] [--jobs N] [-0] "
     "[FILE...]\n"
     "Plays recordings again and prints a verdict for each, then a summary. Without FILE, or with\n"
     "-, the names come from standard input, one a line.\n"
     "  --json            one JSON object a file, on a line, and no summary\n"
     "  --course          with what happened when, and the score at each second\n"
     "  --salt-file SALT  check signatures with the 77 bytes of this file, not the built-in ones\n"
     "  --jobs N          N processes at a time, not one for each core\n"
     "  -0, --null        the names on standard input end with a zero byte\n"
     "Verdicts: ok, bad-signature, unfinished, wrong-score, impossible, broken, crashed,\n"
     "unreadable.\n"},
    {"simulate", run_simulate, "jtdh", 1, 1,
     "Usage: quorvane-replay simulate [--json] [--trace | --diff OTHER] FILE\n"
     "Plays a recording again and prints the final state and the chained hash of all states.\n"
     "  --json            print a JSON object\n"
     "  --trace           print a line for each step before; not with --json\n"
     "  --diff OTHER      print instead the first step at which the game parts from OTHER, and in\n"
     "                    what; OTHER is a recording or a saved --trace\n"},
    {"dump", run_dump, "h", 1, 1,
     "Usage: quorvane-replay dump FILE\n"
     "Prints a recording as text that pack turns back into the same bytes.\n"},
    {"pack", run_pack, "h", 2, 2,
     "Usage: quorvane-replay pack TEXT OUT\n"
     "Makes a recording of a text as dump prints it; - is standard input or output. The signature\n"
     "is the one in the text.\n"},
    {"key", run_key, "h", 1, SIZE_MAX,
     "Usage: quorvane-replay key FILE...\n"
     "Prints a key for each game: the same for all recordings of one game, whatever name, score,\n"
     "time and signature they have, and another one for any other game. An impossible log has "
     "none.\n"},
    {"likeness", run_likeness, "h", 2, 2,
     "Usage: quorvane-replay likeness A B\n"
     "Plays two recordings that have one seed and prints how alike the courses of their scores "
     "are,\n"
     "from 0.00 to 1.00, or \"undefined\" where one of them has too short a course.\n"},
};

constexpr const char* HELP =
    "Usage: quorvane-replay VERB [OPTION...] FILE...\n"
    "Looks at recordings of Quorvane games, without display or audio.\n"
    "  info      what recordings say of themselves\n"
    "  verify    whether their games are what they say\n"
    "  simulate  plays one and prints what came of it\n"
    "  dump      prints one as text\n"
    "  pack      makes one of such a text\n"
    "  key       what all recordings of one game have in common\n"
    "  likeness  how alike two games with one seed are\n"
    "  export    draws one as pictures or a video\n"
    "  --help, VERB --help, --version\n"
    "Exit status: 0 all is good; 1 a file is not good, or two games part; 2 wrong usage, or a "
    "file\n"
    "that cannot be read.\n";

bool parse_jobs(const char* text, size_t* jobs) {
    constexpr size_t MOST_JOBS = 256;
    const char* const end = text + std::strlen(text);
    const auto [behind, error] = std::from_chars(text, end, *jobs);
    return behind == end && error == std::errc() && *jobs >= 1 && *jobs <= MOST_JOBS;
}

// Takes the options of a verb: null, or what is wrong with them.
const char* take_options(const verb& verb, int argc, char** argv, arguments* arguments) {
    verify_options* const common = &arguments->common;
    opterr = 0;
    for (int code = 0; (code = getopt_long(argc, argv, "0h", OPTIONS, nullptr)) != -1;) {
        if (code == '?' || std::strchr(verb.options, code) == nullptr) {
            return "an option that it does not take, or one without its value";
        }
        if (optarg != nullptr && *optarg == '\0') {
            return "an option with an empty value";
        }
        switch (code) {
            case 'j':
                common->json = true;
                break;
            case 'c':
                common->course = true;
                break;
            case 's':
                arguments->salt_file = optarg;
                break;
            case 'J':
                if (!parse_jobs(optarg, &common->jobs)) {
                    return "--jobs takes a number from 1 to 256";
                }
                break;
            case '0':
                common->name_end = '\0';
                break;
            case 't':
                arguments->trace = true;
                break;
            case 'd':
                arguments->other = optarg;
                break;
            default:
                arguments->help = true;
                return nullptr;
        }
    }
    common->files.assign(argv + optind, argv + argc);
    if (common->files.size() < verb.least_files || common->files.size() > verb.most_files) {
        return "too few or too many files";
    }
    if (common->course && !common->json) {
        return "--course goes with --json only";
    }
    const bool exclusive = !arguments->trace || (arguments->other.empty() && !common->json);
    return exclusive ? nullptr : "--trace goes neither with --diff nor with --json";
}

int run_verb(const verb& verb, int argc, char** argv) {
    arguments arguments;
    arguments.common.jobs = std::max(std::thread::hardware_concurrency(), 1U);
    const char* const wrong = take_options(verb, argc, argv, &arguments);
    if (wrong != nullptr) {
        return complain(verb.name, format("%s; see quorvane-replay %s --help", wrong, verb.name));
    }
    if (arguments.help) {
        std::fputs(verb.help, stdout);
        return 0;
    }
    std::string reason;
    if (!read_salt(arguments.salt_file, &arguments.common.salt, &reason)) {
        return complain(arguments.salt_file, reason);
    }
    return verb.run(arguments);
}

// Drawing needs libraries that nothing else here does, so it is a program of its own: beside this
// one where it is built, in a folder of its own where it is installed. Returns only if it is not
// there.
int run_export(char** argv) {
    const std::string program = "quorvane-export";
    execv((own_folder() + program).c_str(), argv);
    execv((own_folder() + EXPORT_FOLDER "/" + program).c_str(), argv);
    return complain(program, std::strerror(errno));
}

int run(int argc, char** argv) {
    const std::string word = argc > 1 ? argv[1] : "";
    const auto verb = std::find_if(std::begin(VERBS), std::end(VERBS),
                                   [&word](const struct verb& v) { return word == v.name; });
    if (verb != std::end(VERBS)) {
        return run_verb(*verb, argc - 1, argv + 1);
    }
    if (word == "export") {
        return run_export(argv + 1);
    }
    if (word == "--help" || word == "-h") {
        std::fputs(HELP, stdout);
    } else if (word == "--version") {
        std::puts("quorvane-replay " QUORVANE_VERSION);
    } else {
        return complain(word.empty() ? "no verb" : word,
                        word.empty() ? "see quorvane-replay --help"
                                     : "no such verb; see quorvane-replay --help");
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    open_standard_streams();
    int status = 0;
    try {
        status = run(argc, argv);
    } catch (const std::bad_alloc&) {
        status = complain("memory", "there is not enough of it");
    }
    errno = 0;
    const bool written = std::fflush(stdout) == 0 && std::ferror(stdout) == 0;
    if (!written && status != 2) {
        status =
            complain("standard output", errno != 0 ? std::strerror(errno) : "cannot be written");
    }
    return status;
}
