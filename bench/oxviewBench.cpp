// oxviewBench: oxview end to end on a generated binary STL of a million triangles (about 50 MB):
// wall time, CPU time and peak memory of the process, and oxview's own stage timings.
//
//   <build>/bin/oxviewBench [--runs N] [--triangles N] [--oxview PATH] [-- oxview options...]
//
// The file is written to a fresh temporary directory and removed afterwards, together with the
// image. A plain program printing a table: each run is one process, which a repeated-iteration
// harness cannot measure.
#include "sphereStl.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

struct runStats_t {
    int exitStatus = -1;
    double wallSeconds = 0.0;
    double userSeconds = 0.0;
    double systemSeconds = 0.0;
    long peakKilobytes = 0;
    std::string stderrText;
};

double seconds(const timeval& t) { return double(t.tv_sec) + double(t.tv_usec) / 1e6; }

/// Runs the program, collecting its stderr (the timings) and its resource usage from wait4.
runStats_t runProcess(const std::vector<std::string>& argv) {
    runStats_t stats;
    int pipeFds[2];
    if (pipe(pipeFds) != 0) return stats;
    const auto start = std::chrono::steady_clock::now();
    const pid_t pid = fork();
    if (pid == 0) {
        dup2(pipeFds[1], STDERR_FILENO);
        // Only the timings on stderr are wanted, not the "wrote ..." line.
        if (const int devNull = open("/dev/null", O_WRONLY); devNull >= 0) dup2(devNull, STDOUT_FILENO);
        close(pipeFds[0]);
        close(pipeFds[1]);
        std::vector<char*> args;
        for (const auto& a : argv) args.push_back(const_cast<char*>(a.c_str()));
        args.push_back(nullptr);
        execv(args[0], args.data());
        std::perror("execv");
        _exit(127);
    }
    close(pipeFds[1]);
    char buffer[4096];
    for (ssize_t n; (n = read(pipeFds[0], buffer, sizeof buffer)) > 0;) stats.stderrText.append(buffer, std::size_t(n));
    close(pipeFds[0]);
    int status = 0;
    rusage usage{};
    if (pid < 0 || wait4(pid, &status, 0, &usage) != pid) return stats;
    stats.wallSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    stats.exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    stats.userSeconds = seconds(usage.ru_utime);
    stats.systemSeconds = seconds(usage.ru_stime);
    stats.peakKilobytes = usage.ru_maxrss;  // kilobytes on Linux
    return stats;
}

} // namespace

int main(int argc, char** argv) {
    int runs = 1;
    long triangles = 1000000;
    std::string oxview = OXVIEW_EXE;
    std::vector<std::string> extra;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "--runs" && i + 1 < argc) runs = std::max(1, std::atoi(argv[++i]));
        else if (arg == "--triangles" && i + 1 < argc) triangles = std::max(2000L, std::atol(argv[++i]));
        else if (arg == "--oxview" && i + 1 < argc) oxview = argv[++i];
        else if (arg == "--") extra.assign(argv + i + 1, argv + argc), i = argc;
        else {
            std::fprintf(stderr, "usage: oxviewBench [--runs N] [--triangles N] [--oxview PATH] [-- oxview options]\n");
            return 2;
        }
    }

    char pattern[] = "/tmp/oxviewBench.XXXXXX";
    if (!mkdtemp(pattern)) {
        std::perror("mkdtemp");
        return 1;
    }
    const std::filesystem::path dir(pattern);
    const std::string stl = (dir / "sphere.stl").string();
    oxtest::sphereStl_t shape;
    shape.rings = 500;
    shape.sectors = int(triangles / 1000);
    if (!oxtest::writeSphereStl(stl, shape)) {
        std::fprintf(stderr, "cannot write %s\n", stl.c_str());
        std::filesystem::remove_all(dir);
        return 1;
    }
    std::printf("input: %ld triangles, %.1f MB binary STL\n", 2L * shape.rings * shape.sectors,
                double(std::filesystem::file_size(stl)) / 1e6);

    // End to end as a user runs it; then once more with --timings, which adds one replayed frame
    // to report what later frames cost, for the stages.
    std::vector<std::string> command{oxview, stl, "--out", (dir / "bench.png").string()};
    command.insert(command.end(), extra.begin(), extra.end());
    std::vector<std::string> timed = command;
    timed.push_back("--timings");
    std::printf("command:");
    for (const auto& c : command) std::printf(" %s", c.c_str());
    std::printf("\n");

    int failures = 0;
    for (int run = 1; run <= runs; ++run) {
        const runStats_t stats = runProcess(command);
        std::printf("\nrun %d: exit %d, wall %.2f s, user %.2f s, system %.2f s, peak RSS %.1f MB\n", run,
                    stats.exitStatus, stats.wallSeconds, stats.userSeconds, stats.systemSeconds,
                    double(stats.peakKilobytes) / 1024.0);
        std::fputs(stats.stderrText.c_str(), stdout);
        const runStats_t stages = runProcess(timed);
        std::fputs(stages.stderrText.c_str(), stdout);
        if (stats.exitStatus != 0 || stages.exitStatus != 0) ++failures;
    }
    std::filesystem::remove_all(dir);
    return failures == 0 ? 0 : 1;
}
