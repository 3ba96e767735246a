// A stand-in for the engine in the tests of test runs, in plain C++ so that
// it starts as an outside program does. It writes to FAKE_ENGINE_LOG one line
// each: "cwd PATH", "arg TEXT", "file RELATIVE-PATH" for what it finds under
// chars/ and stages/ (sorted); copies those files into FAKE_ENGINE_SNAPSHOT;
// stays FAKE_ENGINE_SLEEP_MS and exits with FAKE_ENGINE_EXIT.

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

namespace fs = std::filesystem;

int main(int argc, char **argv)
{
    const fs::path cwd = fs::current_path();
    std::vector<std::string> files;
    for (const char *folder : {"chars", "stages"}) {
        if (!fs::is_directory(cwd / folder))
            continue;
        for (const auto &entry : fs::recursive_directory_iterator(cwd / folder)) {
            if (entry.is_regular_file())
                files.push_back(fs::relative(entry.path(), cwd).generic_string());
        }
    }
    std::sort(files.begin(), files.end());

    if (const char *log = std::getenv("FAKE_ENGINE_LOG")) {
        std::ofstream out(log);
        out << "cwd " << cwd.generic_string() << '\n';
        for (int i = 1; i < argc; ++i)
            out << "arg " << argv[i] << '\n';
        for (const std::string &file : files)
            out << "file " << file << '\n';
    }
    if (const char *snapshot = std::getenv("FAKE_ENGINE_SNAPSHOT")) {
        for (const std::string &file : files) {
            const fs::path target = fs::path(snapshot) / file;
            fs::create_directories(target.parent_path());
            fs::copy_file(cwd / file, target, fs::copy_options::overwrite_existing);
        }
    }
    if (const char *sleep = std::getenv("FAKE_ENGINE_SLEEP_MS"))
        std::this_thread::sleep_for(std::chrono::milliseconds(std::atoi(sleep)));
    const char *code = std::getenv("FAKE_ENGINE_EXIT");
    return code ? std::atoi(code) : 0;
}
