/// Prints the largest difference of two files of floats. Fails above a bound.

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

namespace {

std::vector<float> Read(const char* path) {
    std::ifstream file(path, std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(file)), {});
    std::vector<float> samples(bytes.size() / sizeof(float));
    std::memcpy(samples.data(), bytes.data(), samples.size() * sizeof(float));
    return samples;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::cerr << "compare_floats A B BOUND\n";
        return 2;
    }
    const std::vector<float> a = Read(argv[1]);
    const std::vector<float> b = Read(argv[2]);
    if (a.empty() || a.size() != b.size()) {
        std::cerr << "lengths differ: " << a.size() << " and " << b.size() << " samples\n";
        return 1;
    }
    double largest = 0.0;
    std::size_t differing = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        const double difference = std::abs(static_cast<double>(a[i]) - static_cast<double>(b[i]));
        differing += difference > 0.0 ? 1 : 0;
        largest = difference <= largest ? largest : difference;  // NaN stays
    }
    std::cout << a.size() << " floats, " << differing << " differ, largest difference " << largest
              << "\n";
    return largest <= std::strtod(argv[3], nullptr) ? 0 : 1;
}
