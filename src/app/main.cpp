// kestrelon: the workbench.
#include "app/application.h"

int main(int argc, char** argv)
{
    return kestrelon::runWorkbench(argc, argv);
}
