#pragma once

#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

/// A temporary folder, removed with the object.
class TempDir {
public:
    TempDir() {
        std::random_device random;
        do {
            mPath = std::filesystem::temp_directory_path() /
                    ("audio_filter_test_" + std::to_string(random()));
        } while (!std::filesystem::create_directory(mPath));
    }
    ~TempDir() { std::filesystem::remove_all(mPath); }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    std::string File(const std::string& name) const { return (mPath / name).string(); }

    std::vector<std::string> Names() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(mPath)) {
            names.push_back(entry.path().filename().string());
        }
        return names;
    }

private:
    std::filesystem::path mPath;
};

inline std::string ReadFile(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();  // as text, which converts line ends to \n
    return text.str();
}

inline void WriteFile(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}
