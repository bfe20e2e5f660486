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
#include <string>
#include <thread>
#include <vector>

#include "json_writer.h"
#include "replay_inspect.h"
#include "replay_run.h"
#include "replay_text.h"
#include "replay_verify.h"

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
    {"json", no_argument, nullptr, 'j'},       {"salt-file", required_argument, nullptr, 's'},
    {"jobs", required_argument, nullptr, 'J'}, {"null", no_argument, nullptr, '0'},
    {"trace", no_argument, nullptr, 't'},      {"diff", required_argument, nullptr, 'd'},
    {"help", no_argument, nullptr, 'h'},       {nullptr, 0, nullptr, 0},
};

// Loads a file. Returns an exit status, and the reason is told.
int load_file(const std::string& path, recording* log) {
    std::string reason;
    const load_status status = recording_load(path, log, &reason);
    return status == LOAD_OK ? 0 : complain(path, reason, status);
}

void describe(recording& log, const verify_options& options) {
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
    report.add("file", log.path);
    report.add("size", static_cast<int64_t>(log.bytes.size()));
    report.add("name", '[' + printable(log.name) + ']', json_string(log.name));
    report.add("score", int64_t{log.score});
    report.add("created", created + " (" + utc_time(log.created) + ')', created);
    report.add("date", "", json_string(utc_time(log.created)));
    report.add("duration", static_cast<int64_t>(log.duration));
    report.add("frames", static_cast<int64_t>(log.type_counts[REPLAY_EVENT_TICK / 4]));
    report.add("events", static_cast<int64_t>(log.event_count));
    report.add("types", joined(types, " "), '{' + joined(json_types, ",") + '}');
    report.add("signature", signature_is_right(&log, options.salt) ? "right" : "wrong");
    report.print(options.json);
}

int run_info(const arguments& arguments) {
    int worst = 0;
    for (const std::string& path : arguments.common.files) {
        recording log;
        std::string reason;
        const load_status status = recording_load(path, &log, &reason);
        if (status == LOAD_OK) {
            describe(log, arguments.common);
        } else {
            if (arguments.common.json) {
                report report;
                report.add("file", path);
                report.add("error", reason);
                report.print(true);
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
    recording log;
    const int status = load_file(arguments.common.files[0], &log);
    if (status != 0 || !arguments.other.empty()) {
        return status != 0 ? status : simulate_diff(log, arguments.other, arguments.common.json);
    }
    simulate(log, arguments.trace, arguments.common.json);
    return 0;
}

int run_dump(const arguments& arguments) {
    recording log;
    const int status = load_file(arguments.common.files[0], &log);
    if (status == 0) {
        dump_recording(log);
    }
    return status;
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
    {"verify", run_verify, "jsJ0h", 0, SIZE_MAX,
     "Usage: quorvane-replay verify [--json] [--salt-file SALT] [--jobs N] [-0] [FILE...]\n"
     "Plays recordings again and prints a verdict for each, then a summary. Without FILE, or with\n"
     "-, the names come from standard input, one a line.\n"
     "  --json            one JSON object a file, on a line, and no summary\n"
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
};

constexpr const char* HELP =
    "Usage: quorvane-replay VERB [OPTION...] FILE...\n"
    "Looks at recordings of Quorvane games, without display or audio.\n"
    "  info      what recordings say of themselves\n"
    "  verify    whether their games are what they say\n"
    "  simulate  plays one and prints what came of it\n"
    "  dump      prints one as text\n"
    "  pack      makes one of such a text\n"
    "  export    draws one as pictures or a video\n"
    "  --help, VERB --help, --version\n"
    "Exit status: 0 all is good; 1 a file is not good, or two games part; 2 wrong usage, or a "
    "file\n"
    "that cannot be read.\n";

// Takes the options of a verb: null, or what is wrong with them.
const char* take_options(const verb& verb, int argc, char** argv, arguments* arguments) {
    constexpr size_t MOST_JOBS = 256;
    verify_options* const common = &arguments->common;
    const char* end = nullptr;
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
            case 's':
                arguments->salt_file = optarg;
                break;
            case 'J':
                end = optarg + std::strlen(optarg);
                if (std::from_chars(optarg, end, common->jobs).ptr != end || common->jobs < 1 ||
                    common->jobs > MOST_JOBS) {
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
        return complain(word.empty() ? "no verb" : word, "see quorvane-replay --help");
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
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
