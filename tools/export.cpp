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
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "font.h"
#include "game.h"
#include "input.h"
#include "main.h"
#include "replay.h"

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
    "  --size WxH      pixels, 1280x720 unless given\n"
    "  --fps N         pictures a second of game time, 1 to 1000, 50 unless given\n"
    "  --from S        first second of game time, 0 unless given\n"
    "  --to S          last second, the game's end unless given; at most 150\n"
    "  --assets DIR    folder that holds graphics/, the working directory unless given\n"
    "  --help          this text\n"
    "\n"
    "Exit status: 0 written, 1 the recording or the output is at fault, 2 wrong usage.\n";

struct options {
    std::string file;
    std::string frames;
    std::string video;
    std::string assets = ".";
    int32_t width = 1280;
    int32_t height = 720;
    int32_t fps = 50;
    double from = 0.0;
    double to = GAME_DURATION / MS_PER_SECOND;  // no game lasts longer, whatever its log says
};

[[gnu::format(printf, 1, 2)]] bool complain(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    std::fputs("quorvane-export: ", stderr);
    std::vfprintf(stderr, format, arguments);
    std::fputc('\n', stderr);
    va_end(arguments);
    return false;
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
    enum { FRAMES, VIDEO, SIZE, FPS, FROM, TO, ASSETS, HELP };
    constexpr option NAMES[] = {
        {"frames", required_argument, nullptr, FRAMES},
        {"video", required_argument, nullptr, VIDEO},
        {"size", required_argument, nullptr, SIZE},
        {"fps", required_argument, nullptr, FPS},
        {"from", required_argument, nullptr, FROM},
        {"to", required_argument, nullptr, TO},
        {"assets", required_argument, nullptr, ASSETS},
        {"help", no_argument, nullptr, HELP},
        {nullptr, 0, nullptr, 0},
    };
    constexpr double LONGEST = GAME_DURATION / MS_PER_SECOND;
    for (int choice = 0; (choice = getopt_long(count, arguments, "", NAMES, nullptr)) != -1;) {
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
                    return complain("--size wants WxH from 16x16 to 8192x8192, not '%s'", optarg);
                }
                break;
            case FPS:
                if (!parse_number(optarg, 1.0, 1000.0, &number) ||
                    number != static_cast<int32_t>(number)) {
                    return complain("--fps wants a whole number from 1 to 1000, not '%s'", optarg);
                }
                options->fps = static_cast<int32_t>(number);
                break;
            case FROM:
            case TO:
                if (!parse_number(optarg, 0.0, LONGEST, &number)) {
                    return complain("--from and --to want seconds from 0 to 150, not '%s'", optarg);
                }
                (choice == FROM ? options->from : options->to) = number;
                break;
            case ASSETS:
                options->assets = optarg;
                break;
            case HELP:
                std::fputs(USAGE, stdout);
                std::exit(0);
            default:
                return false;
        }
    }
    if (optind + 1 != count) {
        return complain("one recording, please; --help tells the rest");
    }
    if (options->frames.empty() == options->video.empty()) {
        return complain("either --frames or --video, please");
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
            return complain("no OpenGL without a display here (EGL error 0x%x)",
                            static_cast<unsigned>(eglGetError()));
        }
        EGLSurface surface = eglCreatePbufferSurface(display_, config, size);
        EGLContext context = eglCreateContext(display_, config, EGL_NO_CONTEXT, nullptr);
        if (surface == EGL_NO_SURFACE || context == EGL_NO_CONTEXT ||
            eglMakeCurrent(display_, surface, surface, context) != EGL_TRUE) {
            return complain("OpenGL refuses a picture of %dx%d (EGL error 0x%x)", width, height,
                            static_cast<unsigned>(eglGetError()));
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
        return complain("%s: %s", path.c_str(), image.message);
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
            return complain("no pipe: %s", std::strerror(errno));
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
            return complain("--video needs the program ffmpeg, which does not start: %s",
                            std::strerror(failure));
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
        waitpid(process_, &status, 0);
        process_ = -1;
        return WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }

private:
    pid_t process_ = -1;
    std::FILE* stream_ = nullptr;
};

// --- The game -------------------------------------------------------------------------------

// One recorded frame without its wait: the game time, or a negative number at the end.
int32_t next_time(input* input) {
    const int32_t delta = replay_next_tick(input->replay, input_replay_event_cb, input);
    if (delta < 0) {
        return -1;
    }
    input->elapsed += static_cast<uint32_t>(delta);
    return static_cast<int32_t>(input->elapsed);
}

bool draw_game(const options& options, input* input, encoder* encoder) {
    const std::unique_ptr<game, decltype(&game_destroy)> game(
        game_init(input, GAME_SHIP_COUNT, options.width, options.height), &game_destroy);
    picture picture = {options.width, options.height, {}};
    int32_t next = next_time(input);
    for (int64_t frame = 0;; ++frame) {
        // Each picture shows the last step that is not later than its own time, in ms.
        const double due =
            (options.from + static_cast<double>(frame) / options.fps) * MS_PER_SECOND;
        while (next >= 0 && next <= due && game_is_over(game.get()) == 0) {
            game_step(game.get(), next);
            next = next_time(input);
        }
        const bool ended = next < 0 || game_is_over(game.get()) != 0;
        if (due > options.to * MS_PER_SECOND) {
            return true;
        }
        glEnable(GL_TEXTURE_2D);
        game_draw(game.get());
        read_picture(&picture);
        if (encoder != nullptr) {
            if (!encoder->write(picture)) {
                return complain("ffmpeg stopped taking pictures");
            }
        } else {
            char name[32];
            std::snprintf(name, sizeof(name), "/frame-%06lld.png", static_cast<long long>(frame));
            if (!write_png(picture, options.frames + name)) {
                return false;
            }
        }
        if (ended) {
            return true;
        }
    }
}

bool run(options options) {
    const std::unique_ptr<input, decltype(&input_destroy)> input(input_init(options.file.c_str()),
                                                                 &input_destroy);
    if (input_is_replay(input.get()) == 0) {
        return complain("%s: not a recording that can be played", options.file.c_str());
    }
    if (!options.frames.empty()) {
        options.frames = absolute_path(options.frames);
        if (mkdir(options.frames.c_str(), 0777) != 0 && errno != EEXIST) {
            return complain("%s: %s", options.frames.c_str(), std::strerror(errno));
        }
    } else {
        options.video = absolute_path(options.video);
    }
    if (chdir(options.assets.c_str()) != 0) {
        return complain("%s: %s", options.assets.c_str(), std::strerror(errno));
    }

    setenv("SDL_VIDEODRIVER", "dummy", 1);
    if (SDL_Init(SDL_INIT_VIDEO) < 0 ||
        SDL_SetVideoMode(options.width, options.height, 32, SDL_SWSURFACE) == nullptr) {
        return complain("SDL: %s", SDL_GetError());
    }
    offscreen context;
    if (!context.open(options.width, options.height)) {
        return false;
    }
    init_gl_state(options.width, options.height);
    if (load_textures() < 0) {
        return complain("the pictures in %s/graphics cannot be loaded", options.assets.c_str());
    }
    font_init();
    encoder encoder;
    const bool to_video = !options.video.empty();
    if (to_video && !encoder.open(options)) {
        return false;
    }
    input_reset(input.get());
    if (!draw_game(options, input.get(), to_video ? &encoder : nullptr)) {
        return false;
    }
    return !to_video || encoder.close() || complain("ffmpeg failed");
}

}  // namespace

int main(int argument_count, char** arguments) {
    std::signal(SIGPIPE, SIG_IGN);
    options options;
    if (!parse_options(argument_count, arguments, &options)) {
        return EXIT_USAGE;
    }
    const bool written = run(options);
    SDL_Quit();
    return written ? 0 : 1;
}
