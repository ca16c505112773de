#include <iostream>
#include <string>
#include <vector>

#include "app/cli.h"

int main(int argc, char** argv) {
    std::vector<std::string> arguments(argv + 1, argv + argc);
    return lectern::runCli(arguments, std::cout, std::cerr);
}
