// Makes what is installed beside the tool. usage: tessel_pages FOLDER
#include "apps/tessel/commands/CommandLine.h"
#include "apps/tessel/output/Completions.h"
#include "apps/tessel/output/HelpPages.h"

#include <filesystem>
#include <fstream>
#include <iostream>

using namespace Tessel::App;

int main(int argc, char** argv)
{
    if (argc != 2) return usage;
    const CommandLine line;
    const std::filesystem::path folder = argv[1];
    const std::pair<const char*, std::string> pages[] {
        {"tessel.1", manualPage(line.app, TESSEL_VERSION)},
        {"tessel.bash", bashCompletion(line.app)}, {"_tessel", zshCompletion(line.app)}};
    for (const auto& [name, text] : pages) {
        std::ofstream file(folder / name, std::ios::binary);
        file << text;
        file.close();
        if (!file) {
            std::cerr << folder / name << " cannot be written\n";
            return storage;
        }
    }
    return done;
}
