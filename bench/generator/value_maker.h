#pragma once
// The values of the registry, each made to be a finding or not, and counted as such.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "registry_generator.h"

namespace regvex::bench_generator {

class Random;

class ValueMaker {
  public:
    ValueMaker(Random& rng, const std::vector<RegistryGenerator::DriveFile>& existing,
               const std::vector<RegistryGenerator::DriveFile>& missing,
               const std::vector<std::string>& folders, const std::vector<std::string>& x86_folders,
               GenerationSummary& summary, double file_references);

    // The values of the key given to `sink` last.
    void MakeValues(RegistrySink& sink, std::size_t count);

  private:
    std::string ValueName();
    std::string UniqueName(std::string name);
    std::string PathText(std::string_view dir, std::string_view name);
    const RegistryGenerator::DriveFile& AnyFile();
    std::uint32_t FileReference(bool reached);
    std::string IconIndex();
    void RejectedPath();
    std::uint32_t UnmatchedPath(std::string& name);
    std::uint32_t Oversized();
    std::uint32_t Ordinary();
    std::string OrdinaryFileName();
    std::string OrdinaryText();

    Random& rng_;
    double file_references_;
    const std::vector<RegistryGenerator::DriveFile>& existing_;
    const std::vector<RegistryGenerator::DriveFile>& missing_;
    const std::vector<std::string>& folders_;
    const std::vector<std::string>& x86_folders_;
    GenerationSummary& summary_;
    std::vector<std::uint8_t> data_;
    std::vector<std::string> used_names_;
};

}  // namespace regvex::bench_generator
