// The program in C, as C++11.
#define UseEveryFunctionOfTheInterface UseEveryFunctionOfTheInterfaceInCxx11
#include "every_function.c"
