// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// quorvane-export: draws a recorded game off screen, with the game's own drawing code, and writes
// pictures or a video. The GL context is EGL's, without any display server; SDL runs on its dummy
// driver and only lends the surface that the HUD asks for its size.

#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <GL/gl.h>
#include <SDL.h>
#include <getopt.h>
#include <png.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "assets.h"
#include "font.h"
#include "fpslimiter.h"
#include "game.h"
#include "input.h"
#include "playback.h"
#include "recording_file.h"
#include "tool.h"
#include "video.h"

namespace {

constexpr int EXIT_USAGE = 2;
constexpr int32_t SMALLEST_SIDE = 16;  // pixels
constexpr int32_t LARGEST_SIDE = 8192;
constexpr size_t BYTES_PER_PIXEL = 3;
constexpr double MS_PER_SECOND = 1000.0;

constexpr const char* USAGE =
    "Usage: quorvane-replay export FILE (--frames DIR | --video OUT) [options]\n"
    "Draws a recorded game off screen, with the pictures of the game.\n"
    "\n"
    "  --frames DIR    write DIR/frame-000000.png and so on; DIR is made if it is not there\n"
    "  --video OUT     write a video; needs ffmpeg, which chooses the format by OUT's ending\n"
    "  --force         overwrite OUT if it is there\n"
    "  --size WxH      pixels, 1280x720 unless given\n"
    "  --fps N         pictures a second of game time, 1 to 1000, 50 unless given\n"
    "  --from S        first second of game time, 0 unless given\n"
    "  --to S          last second, the game's end unless given; at most 150\n"
    "  --assets DIR    folder that holds graphics/; unless given, the working directory, or else\n"
    "                  the installed ones\n"
    "  --help          this text\n"
    "\n"
    "Exit status: 0 written, 1 the recording or the output is at fault, 2 wrong usage, or a file\n"
    "that cannot be read.\n";

struct options {
    std::string file;
    std::string frames;
    std::string video;
    std::string assets;
    int32_t width = 1280;
    int32_t height = 720;
    int32_t fps = 50;
    double from = 0.0;
    bool help = false;
    bool force = false;                         // overwrite a video
    double to = GAME_DURATION / MS_PER_SECOND;  // no game lasts longer, whatever its log says
};

// Says why something cannot be done. Always false.
bool refuse(std::string_view subject, std::string_view reason) {
    return complain(subject, reason) == 0;
}

// --- Options --------------------------------------------------------------------------------

bool parse_number(const char* text, double least, double most, double* number) {
    char* end = nullptr;
    *number = std::strtod(text, &end);
    return end != text && *end == '\0' && *number >= least && *number <= most;
}

bool parse_side(const char** text, int32_t* side) {
    char* end = nullptr;
    const long number = std::strtol(*text, &end, 10);
    const bool valid = end != *text && number >= SMALLEST_SIDE && number <= LARGEST_SIDE;
    *side = valid ? static_cast<int32_t>(number) : 0;
    *text = end;
    return valid;
}

bool parse_size(const char* text, options* options) {
    return parse_side(&text, &options->width) && *text++ == 'x' &&
           parse_side(&text, &options->height) && *text == '\0';
}

bool parse_options(int count, char** arguments, options* options) {
    enum { FRAMES, VIDEO, SIZE, FPS, FROM, TO, ASSETS, FORCE };
    constexpr option NAMES[] = {
        {"frames", required_argument, nullptr, FRAMES},
        {"video", required_argument, nullptr, VIDEO},
        {"size", required_argument, nullptr, SIZE},
        {"fps", required_argument, nullptr, FPS},
        {"from", required_argument, nullptr, FROM},
        {"to", required_argument, nullptr, TO},
        {"assets", required_argument, nullptr, ASSETS},
        {"force", no_argument, nullptr, FORCE},
        {"help", no_argument, nullptr, 'h'},
        {nullptr, 0, nullptr, 0},
    };
    constexpr double LONGEST = GAME_DURATION / MS_PER_SECOND;
    opterr = 0;
    for (int choice = 0; (choice = getopt_long(count, arguments, "h", NAMES, nullptr)) != -1;) {
        double number = 0.0;
        switch (choice) {
            case FRAMES:
                options->frames = optarg;
                break;
            case VIDEO:
                options->video = optarg;
                break;
            case SIZE:
                if (!parse_size(optarg, options)) {
                    return refuse(optarg, "--size wants WxH from 16x16 to 8192x8192");
                }
                break;
            case FPS:
                if (!parse_number(optarg, 1.0, 1000.0, &number) ||
                    number != static_cast<int32_t>(number)) {
                    return refuse(optarg, "--fps wants a whole number from 1 to 1000");
                }
                options->fps = static_cast<int32_t>(number);
                break;
            case FROM:
            case TO:
                if (!parse_number(optarg, 0.0, LONGEST, &number)) {
                    return refuse(optarg, "--from and --to want seconds from 0 to 150");
                }
                (choice == FROM ? options->from : options->to) = number;
                break;
            case ASSETS:
                options->assets = optarg;
                break;
            case FORCE:
                options->force = true;
                break;
            case 'h':
                options->help = true;
                return true;
            default:
                return refuse("export",
                              "an option that it does not take, or one without its value; see "
                              "quorvane-replay export --help");
        }
    }
    if (optind + 1 != count) {
        return refuse("export", "one recording, please; see quorvane-replay export --help");
    }
    if (options->frames.empty() == options->video.empty()) {
        return refuse("export", "either --frames or --video, please");
    }
    if (options->to < options->from) {
        return refuse("export", "--to is before --from");
    }
    if (!options->video.empty() && (options->width % 2 != 0 || options->height % 2 != 0)) {
        return refuse("export", "videos have an even width and height");
    }
    options->file = arguments[optind];
    return true;
}

std::string absolute_path(const std::string& path) {
    if (!path.empty() && path[0] == '/') {
        return path;
    }
    const std::unique_ptr<char, decltype(&std::free)> here(getcwd(nullptr, 0), &std::free);
    return here ? std::string(here.get()) + "/" + path : path;
}

// --- Off-screen GL --------------------------------------------------------------------------

class offscreen {
public:
    offscreen() = default;
    offscreen(const offscreen&) = delete;
    offscreen& operator=(const offscreen&) = delete;
    ~offscreen() {
        if (display_ != EGL_NO_DISPLAY) {
            eglMakeCurrent(display_, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
            eglTerminate(display_);
        }
    }

    bool open(int32_t width, int32_t height) {
        const auto get_display = reinterpret_cast<PFNEGLGETPLATFORMDISPLAYEXTPROC>(
            eglGetProcAddress("eglGetPlatformDisplayEXT"));
        if (get_display != nullptr) {
            display_ = get_display(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
        }
        if (display_ == EGL_NO_DISPLAY) {
            display_ = eglGetDisplay(EGL_DEFAULT_DISPLAY);
        }
        constexpr EGLint CONFIG[] = {EGL_SURFACE_TYPE,
                                     EGL_PBUFFER_BIT,
                                     EGL_RENDERABLE_TYPE,
                                     EGL_OPENGL_BIT,
                                     EGL_RED_SIZE,
                                     8,
                                     EGL_GREEN_SIZE,
                                     8,
                                     EGL_BLUE_SIZE,
                                     8,
                                     EGL_NONE};
        const EGLint size[] = {EGL_WIDTH, width, EGL_HEIGHT, height, EGL_NONE};
        EGLConfig config = nullptr;
        EGLint count = 0;
        if (eglInitialize(display_, nullptr, nullptr) != EGL_TRUE ||
            eglBindAPI(EGL_OPENGL_API) != EGL_TRUE ||
            eglChooseConfig(display_, CONFIG, &config, 1, &count) != EGL_TRUE || count < 1) {
            return refuse("EGL", format("no OpenGL without a display here (error 0x%x)",
                                        static_cast<unsigned>(eglGetError())));
        }
        EGLSurface surface = eglCreatePbufferSurface(display_, config, size);
        EGLContext context = eglCreateContext(display_, config, EGL_NO_CONTEXT, nullptr);
        if (surface == EGL_NO_SURFACE || context == EGL_NO_CONTEXT ||
            eglMakeCurrent(display_, surface, surface, context) != EGL_TRUE) {
            return refuse("EGL", format("it refuses a picture of %dx%d (error 0x%x)", width, height,
                                        static_cast<unsigned>(eglGetError())));
        }
        return true;
    }

private:
    EGLDisplay display_ = EGL_NO_DISPLAY;
};

// --- Output ---------------------------------------------------------------------------------

// Rows from the top, RGB.
struct picture {
    int32_t width;
    int32_t height;
    std::vector<uint8_t> pixels;
};

void read_picture(picture* picture) {
    const size_t row = static_cast<size_t>(picture->width) * BYTES_PER_PIXEL;
    std::vector<uint8_t> upside_down(row * static_cast<size_t>(picture->height));
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, picture->width, picture->height, GL_RGB, GL_UNSIGNED_BYTE,
                 upside_down.data());
    picture->pixels.resize(upside_down.size());
    for (size_t y = 0; y < static_cast<size_t>(picture->height); ++y) {
        const size_t from = (static_cast<size_t>(picture->height) - 1 - y) * row;
        std::memcpy(&picture->pixels[y * row], &upside_down[from], row);
    }
}

bool write_png(const picture& picture, const std::string& path) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(picture.width);
    image.height = static_cast<png_uint_32>(picture.height);
    image.format = PNG_FORMAT_RGB;
    image.flags = PNG_IMAGE_FLAG_FAST;
    if (png_image_write_to_file(&image, path.c_str(), 0, picture.pixels.data(), 0, nullptr) == 0) {
        return refuse(path, image.message);
    }
    return true;
}

// Feeds raw pictures to ffmpeg's standard input.
class encoder {
public:
    encoder() = default;
    encoder(const encoder&) = delete;
    encoder& operator=(const encoder&) = delete;
    ~encoder() { close(); }

    bool open(const options& options) {
        int ends[2];
        if (pipe(ends) != 0) {
            return refuse("ffmpeg", std::strerror(errno));
        }
        const std::string size =
            std::to_string(options.width) + "x" + std::to_string(options.height);
        const std::string rate = std::to_string(options.fps);
        std::vector<std::string> words = {
            "ffmpeg", "-loglevel", "error", "-y", "-f", "rawvideo", "-pix_fmt", "rgb24",      "-s",
            size,     "-r",        rate,    "-i", "-",  "-pix_fmt", "yuv420p",  options.video};
        std::vector<char*> arguments;
        arguments.reserve(words.size() + 1);
        for (std::string& word : words) {
            arguments.push_back(word.data());
        }
        arguments.push_back(nullptr);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, ends[0], STDIN_FILENO);
        posix_spawn_file_actions_addclose(&actions, ends[0]);
        posix_spawn_file_actions_addclose(&actions, ends[1]);
        const int failure =
            posix_spawnp(&process_, "ffmpeg", &actions, nullptr, arguments.data(), environ);
        posix_spawn_file_actions_destroy(&actions);
        ::close(ends[0]);
        if (failure != 0) {
            ::close(ends[1]);
            process_ = -1;
            return refuse("ffmpeg", format("--video needs this program, which does not start: %s",
                                           std::strerror(failure)));
        }
        stream_ = fdopen(ends[1], "wb");
        return stream_ != nullptr;
    }

    bool write(const picture& picture) {
        return std::fwrite(picture.pixels.data(), 1, picture.pixels.size(), stream_) ==
               picture.pixels.size();
    }

    // True if ffmpeg took everything and ended well.
    bool close() {
        if (stream_ != nullptr) {
            std::fclose(stream_);
            stream_ = nullptr;
        }
        if (process_ <= 0) {
            return true;
        }
        int status = 0;
        const pid_t waited = waitpid(process_, &status, 0);
        const bool is_its_own = waited == process_;
        process_ = -1;
        return is_its_own && WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }

private:
    pid_t process_ = -1;
    std::FILE* stream_ = nullptr;
};

// --- The game -------------------------------------------------------------------------------

bool draw_game(const options& options, const recording& log, encoder* encoder) {
    playback run(log.bytes, options.width, options.height);
    picture picture = {options.width, options.height, {}};
    run.input->limiter->measured_rate = static_cast<float>(options.fps);  // nothing is limited here
    for (int64_t frame = 0;; ++frame) {
        // Each picture shows the last step that is not later than its own time, in ms.
        const double due =
            (options.from + static_cast<double>(frame) / options.fps) * MS_PER_SECOND;
        while (run.step_until(due)) {
        }
        if (due > options.to * MS_PER_SECOND) {
            return true;
        }
        glEnable(GL_TEXTURE_2D);
        game_draw(run.game.get());
        read_picture(&picture);
        if (encoder != nullptr) {
            if (!encoder->write(picture)) {
                return refuse("ffmpeg", "it has stopped taking pictures");
            }
        } else {
            char name[32];
            std::snprintf(name, sizeof(name), "/frame-%06lld.png", static_cast<long long>(frame));
            if (!write_png(picture, options.frames + name)) {
                return false;
            }
        }
        if (run.end != RUN_GOES_ON) {
            return true;
        }
    }
}

bool has_pictures(const std::string& folder) {
    return access((folder + "/graphics").c_str(), F_OK) == 0;
}

// The working directory or, if it has no pictures, the installation that this program is in.
std::string found_assets() {
    const std::string installed = own_folder() + ASSETS_FOLDER;
    return has_pictures(".") || !has_pictures(installed) ? "." : installed;
}

bool is_regular(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

bool run(options options, const recording& log) {
    if (!options.frames.empty()) {
        options.frames = absolute_path(options.frames);
        if (mkdir(options.frames.c_str(), 0777) != 0 && errno != EEXIST) {
            return refuse(options.frames, std::strerror(errno));
        }
        if (access((options.frames + "/frame-000000.png").c_str(), F_OK) == 0) {
            return refuse(options.frames, "it has pictures of an earlier export");
        }
    } else {
        options.video = absolute_path(options.video);
        if (!options.force && is_regular(options.video)) {
            return refuse(options.video, "it is there already; --force overwrites it");
        }
    }
    if (options.assets.empty()) {
        options.assets = found_assets();
    }
    if (chdir(options.assets.c_str()) != 0) {
        return refuse(options.assets, std::strerror(errno));
    }

    setenv("SDL_VIDEODRIVER", "dummy", 1);
    if (SDL_Init(SDL_INIT_VIDEO) < 0 ||
        SDL_SetVideoMode(options.width, options.height, 32, SDL_SWSURFACE) == nullptr) {
        return refuse("SDL", SDL_GetError());
    }
    for (const int number : {SIGHUP, SIGINT, SIGTERM}) {
        std::signal(number, SIG_DFL);  // SDL makes events of them that nobody here looks at
    }
    offscreen context;
    if (!context.open(options.width, options.height)) {
        return false;
    }
    init_gl_state(options.width, options.height);
    if (load_textures() < 0) {
        return refuse(options.assets + "/graphics", "not all pictures can be loaded");
    }
    font_init();
    encoder encoder;
    const bool to_video = !options.video.empty();
    if (to_video && !encoder.open(options)) {
        return false;
    }
    const bool is_drawn = draw_game(options, log, to_video ? &encoder : nullptr);
    if (!to_video) {
        return is_drawn;
    }
    const bool is_whole = encoder.close() && is_drawn;
    if (!is_whole) {
        if (is_regular(options.video)) {
            unlink(options.video.c_str());  // what there is of it would keep the next one out
        }
        return is_drawn && refuse("ffmpeg", "it has failed");
    }
    return true;
}

}  // namespace

int main(int argument_count, char** arguments) {
    open_standard_streams();
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGCHLD, SIG_DFL);  // who ignores it gets no answer of a child
    options options;
    if (!parse_options(argument_count, arguments, &options)) {
        return EXIT_USAGE;
    }
    if (options.help) {
        std::fputs(USAGE, stdout);
        const bool is_told = std::fflush(stdout) == 0;
        return is_told ? 0 : complain("standard output", std::strerror(errno));
    }
    int status = 0;
    try {
        recording_file file;
        std::string reason;
        status = recording_file_load(options.file, &file, &reason);
        status = status != LOAD_OK ? complain(options.file, reason, status)
                                   : (run(options, file.log) ? 0 : 1);
    } catch (const std::bad_alloc&) {
        status = complain("memory", "there is not enough of it");
    }
    SDL_Quit();
    return status;
}
