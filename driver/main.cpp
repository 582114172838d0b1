#include "driver/ExecuteAkHostMgmt.h"

int main(int argc, char** argv) {
    return runProcess(defaultLogDirectory, argc, argv);
}
