#include "devserver/Program.h"

#include <iostream>

int main(int argc, char** argv) {
    return devserver::run({argv + 1, argv + argc}, std::cout, std::cerr);
}
