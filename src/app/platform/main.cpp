// lectern: the desktop application. Its arguments are deck folders to open.

#include "app/platform/lectern_application.h"

int main(int argc, char* argv[]) {
    auto app = lectern::LecternApplication::create();
    return app->run(argc, argv);
}
