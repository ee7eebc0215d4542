#include "shell/VantroApp.h"

wxIMPLEMENT_APP(vantro::VantroApp);
