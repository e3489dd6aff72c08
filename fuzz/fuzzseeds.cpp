// Writes every target's seed inputs, made with the library's own writers:
//
//   fuzz_seeds <directory> [target...]
//
// creates <directory>/<target>/seed-<n> for the named targets (all when none
// is named) and prints how many it wrote.
#include "fuzztarget.h"

#include <filesystem>
#include <fstream>
#include <iostream>

int main(int argc, char** argv)
{
    if (argc < 2) {
        std::cerr << "usage: fuzz_seeds <directory> [target...]\n";
        return 2;
    }
    const std::filesystem::path root = argv[1];
    std::vector<const fuzz::STarget*> chosen;
    for (int i = 2; i < argc; ++i) {
        const fuzz::STarget* target = fuzz::Find(argv[i]);
        if (!target) {
            std::cerr << "no fuzz target named " << argv[i] << "\n";
            return 2;
        }
        chosen.push_back(target);
    }
    if (chosen.empty())
        for (const fuzz::STarget& target : fuzz::Targets())
            chosen.push_back(&target);
    for (const fuzz::STarget* target : chosen) {
        std::vector<fuzz::Bytes> seeds;
        target->seeds(seeds);
        const std::filesystem::path folder = root / target->name;
        std::filesystem::create_directories(folder);
        for (std::size_t i = 0; i < seeds.size(); ++i) {
            std::ofstream out(folder / ("seed-" + std::to_string(i)), std::ios::binary);
            out.write(reinterpret_cast<const char*>(seeds[i].data()), static_cast<std::streamsize>(seeds[i].size()));
        }
        std::cout << target->name << ": " << seeds.size() << " seeds\n";
    }
    return 0;
}
