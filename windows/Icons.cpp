#include "windows/Icons.h"

#include "base/Resources.h"
#include "toolkit/Screen.h"

#include <string>
#include <wx/image.h>

namespace vantro {

namespace {

wxVector<wxBitmap> LoadSizes(std::string_view key)
{
    if (wxImage::FindHandler(wxBITMAP_TYPE_PNG) == nullptr)
        wxImage::AddHandler(new wxPNGHandler);
    wxVector<wxBitmap> sizes;
    for (const char* size : {"-16", "-32"}) {
        if (const auto png = FindResource("icons", std::string(key) + size))
            sizes.push_back(wxBitmap::NewFromPNGData(png->data(), png->size()));
    }
    return sizes;
}

} // namespace

wxBitmapBundle LoadIcon(std::string_view key)
{
    const wxBitmapBundle usual = wxBitmapBundle::FromBitmaps(LoadSizes(key));
    if (TextScale() == 1 || !usual.IsOk())
        return usual;
    wxVector<wxBitmap> sizes;
    for (const double scale : {TextScale(), 2 * TextScale()}) {
        sizes.push_back(usual.GetBitmap(usual.GetDefaultSize() * scale));
        sizes.back().SetScaleFactor(1);
    }
    return wxBitmapBundle::FromBitmaps(sizes);
}

wxIconBundle ProgramIcons()
{
    wxIconBundle icons;
    for (const wxBitmap& bitmap : LoadSizes("vantro")) {
        wxIcon icon;
        icon.CopyFromBitmap(bitmap);
        icons.AddIcon(icon);
    }
    return icons;
}

} // namespace vantro
