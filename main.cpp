#include "windows/VantroApp.h"

wxIMPLEMENT_APP(vantro::VantroApp);
