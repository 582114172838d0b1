#include "driver/ExecuteAkHostMgmt.h"

int main(int argc, char** argv) {
    return shellStatus(execute_akhostmgmt(argc, argv));
}
