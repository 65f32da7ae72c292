#include "Main.h"

int main(int argc, char** argv)
{
    Main app;
    return app.run(argc, argv);
}
