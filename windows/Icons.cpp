#include "windows/Icons.h"

#include "base/Resources.h"
#include "toolkit/Screen.h"

#include <optional>
#include <string>
#include <wx/image.h>

namespace vantro {

namespace {

std::optional<wxBitmap> LoadPng(std::string_view type, const std::string& name)
{
    if (wxImage::FindHandler(wxBITMAP_TYPE_PNG) == nullptr)
        wxImage::AddHandler(new wxPNGHandler);
    const auto png = FindResource(type, name);
    if (!png)
        return std::nullopt;
    return wxBitmap::NewFromPNGData(png->data(), png->size());
}

} // namespace

wxBitmapBundle LoadIcon(std::string_view key)
{
    wxVector<wxBitmap> sizes;
    for (const char* size : {"-16", "-32"}) {
        if (const auto bitmap = LoadPng("icons", std::string(key) + size))
            sizes.push_back(*bitmap);
    }
    const wxBitmapBundle usual = wxBitmapBundle::FromBitmaps(sizes);
    if (TextScale() == 1 || !usual.IsOk())
        return usual;
    sizes.clear();
    for (const double scale : {TextScale(), 2 * TextScale()}) {
        sizes.push_back(usual.GetBitmap(usual.GetDefaultSize() * scale));
        sizes.back().SetScaleFactor(1);
    }
    return wxBitmapBundle::FromBitmaps(sizes);
}

wxIconBundle ProgramIcons(int largest)
{
    wxIconBundle icons;
    for (const int size : {16, 24, 32, 48, 64, 128, 256}) {
        const auto bitmap = size <= largest ? LoadPng("program", std::to_string(size)) : std::nullopt;
        if (!bitmap)
            continue;
        wxIcon icon;
        icon.CopyFromBitmap(*bitmap);
        icons.AddIcon(icon);
    }
    return icons;
}

} // namespace vantro
