#pragma once

#include <string>

struct Grade {
    int least;
    const char* name;
};

std::string gradeOf(int points);
bool isPerfect(int points);
