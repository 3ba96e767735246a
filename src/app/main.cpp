#include "gui/app/startup.h"

int main(int argc, char **argv)
{
    return kestradaMain(argc, argv);
}
