#include "gnuplot.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

namespace lumo {
namespace {

// The terminal for an ending of a file's name, empty for an unknown one.
std::string terminalOf(const std::string& file) {
    const std::string ending = std::filesystem::path(file).extension();
    return ending == ".svg"   ? "svg"
           : ending == ".png" ? "pngcairo"
           : ending == ".pdf" ? "pdfcairo"
                              : "";
}

// What becomes of gnuplot with this script; its picture goes to `output`.
enum class Outcome { drawn, failed, absent };
Outcome runGnuplot(const std::string& script, int output) {
    // A socket, since writing to it can be told not to raise a signal if gnuplot ends early.
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends)) return Outcome::failed;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    char name[] = "gnuplot", defaults[] = "-d";  // whatever the user's own settings are
    char* const arguments[] = {name, defaults, nullptr};
    pid_t process = 0;
    const int error = posix_spawnp(&process, name, &actions, nullptr, arguments, environ);
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    bool good = error == 0;
    for (std::size_t sent = 0; good && sent < script.size();) {
        const ssize_t count =
            send(ends[0], script.data() + sent, script.size() - sent, MSG_NOSIGNAL);
        if (count < 0 && errno == EINTR) continue;
        good = count > 0;
        if (good) sent += std::size_t(count);
    }
    close(ends[0]);
    if (error != 0) return Outcome::absent;
    int status = 0;
    while (waitpid(process, &status, 0) < 0 && errno == EINTR) continue;
    return good && status == 0 ? Outcome::drawn : Outcome::failed;
}

}  // namespace

void checkPlot(const std::string& file) {
    const std::string terminal = terminalOf(file);
    if (terminal.empty()) throw FileError(file + ": pictures are drawn as .svg, .png or .pdf");
    const Outcome outcome = runGnuplot("set terminal " + terminal + "\n", STDERR_FILENO);
    if (outcome == Outcome::absent)
        throw FileError(file +
                        ": pictures are drawn by gnuplot, which is not installed (Debian: "
                        "gnuplot-nox)");
    if (outcome == Outcome::failed)
        throw FileError(file + ": the gnuplot that is installed cannot draw " + terminal);
}

void drawPicture(OutputFile& file, PictureSize size, const std::string& script) {
    const std::string terminal = terminalOf(file.name());
    // A PDF is measured in inches: 100 pixels.
    const double unit = terminal == "pdfcairo" ? 0.01 : 1;
    std::string text = "set terminal " + terminal + " noenhanced size " +
                       std::to_string(size.width * unit) + "," +
                       std::to_string(size.height * unit) + " font ',13'";
    if (terminal == "svg") text += " background rgb 'white'";
    if (runGnuplot(text + "\n" + script, file.descriptor()) != Outcome::drawn)
        throw FileError(file.name() + ": gnuplot fails");
}

std::string quotedForGnuplot(const std::string& text) {
    std::string result = "'";
    for (const char c : text) result += c == '\'' ? "''" : std::string(1, c);
    return result + "'";
}

}  // namespace lumo
