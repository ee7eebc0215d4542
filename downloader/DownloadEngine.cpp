#include "downloader/DownloadEngine.h"

#include "downloader/PropertyBag.h"
#include "platform/Files.h"
#include "platform/PartFile.h"

#include <utility>
#include <variant>

namespace vantro {

namespace {

constexpr char kSeparator = '/';

std::string FileNamePart(const std::string& address)
{
    return address.substr(address.rfind(kSeparator) + 1); // the whole text when there is no separator
}

std::string JoinPath(const std::string& folder, const std::string& name)
{
    return folder.ends_with(kSeparator) ? folder + name : folder + kSeparator + name;
}

} // namespace

DownloadEngine::DownloadEngine(AsyncRead& reader, EventPump& pump, DownloadHooks hooks)
    : reader_(reader), pump_(pump), hooks_(std::move(hooks))
{
}

DownloadEngine::~DownloadEngine()
{
    reader_.Cancel(ticket_);
}

template <class... Parameters, class... Arguments>
bool DownloadEngine::Raise(const std::function<void(Parameters...)>& event, const Arguments&... arguments)
{
    const std::weak_ptr<const bool> alive = alive_;
    if (const auto handler = event) // a copy: the handler may replace itself, or go with the engine
        handler(arguments...);
    return !alive.expired();
}

void DownloadEngine::Repaint()
{
    if (hooks_.Refresh)
        hooks_.Refresh();
}

void DownloadEngine::MarkChanged(std::string_view name)
{
    if (hooks_.PropertyChanged)
        hooks_.PropertyChanged(name);
}

void DownloadEngine::DeriveSaveFileName()
{
    const bool isComplete = !saveFilePath_.empty() && !fileUrl_.empty();
    saveFileName_ = isComplete ? JoinPath(saveFilePath_, FileNamePart(fileUrl_)) : "";
}

void DownloadEngine::RenameForRedirect()
{
    saveFileName_ = JoinPath(saveFilePath_, FileNamePart(redirectFile_));
}

void DownloadEngine::SetFileURL(const std::string& address)
{
    fileUrl_ = address;
    DeriveSaveFileName();
    MarkChanged("FileURL");
}

void DownloadEngine::SetSaveFilePath(const std::string& folder)
{
    saveFilePath_ = folder;
    DeriveSaveFileName();
    MarkChanged("SaveFilePath");
}

void DownloadEngine::SetFailOnRedirect(bool fail)
{
    failOnRedirect_ = fail;
    MarkChanged("FailOnRedirect");
}

void DownloadEngine::SetRenameOnRedirect(bool rename)
{
    renameOnRedirect_ = rename;
    MarkChanged("RenameOnRedirect");
}

void DownloadEngine::SetShowProgress(bool show)
{
    showProgress_ = show;
    MarkChanged("ShowProgress");
}

void DownloadEngine::ReadProperties(const PropertyBag& bag)
{
    fileUrl_ = bag.ReadString("FileURL", "");
    saveFilePath_ = bag.ReadString("SaveFilePath", "");
    failOnRedirect_ = bag.ReadBool("FailOnRedirect", true);
    renameOnRedirect_ = bag.ReadBool("RenameOnRedirect", true);
    showProgress_ = bag.ReadBool("ShowProgress", true);
    DeriveSaveFileName();
}

void DownloadEngine::WriteProperties(PropertyBag& bag) const
{
    bag.WriteString("FileURL", fileUrl_, "");
    bag.WriteString("SaveFilePath", saveFilePath_, "");
    bag.WriteBool("FailOnRedirect", failOnRedirect_, true);
    bag.WriteBool("RenameOnRedirect", renameOnRedirect_, true);
    bag.WriteBool("ShowProgress", showProgress_, true);
}

void DownloadEngine::ResetTransferInfo()
{
    fileSize_ = 0;
    bytesRead_ = 0;
    connectionAddress_.clear();
    cacheFile_.clear();
    redirectFile_.clear();
    mimeType_.clear();
    saved_ = false;
}

bool DownloadEngine::BeginDownload(bool Wait)
{
    if (downloading_ || saveFilePath_.empty() || fileUrl_.empty())
        return false;
    const auto begun = reader_.Begin(fileUrl_, *this, saveFilePath_);
    if (const auto* refused = std::get_if<ReadRefused>(&begun)) {
        HandleRefusedStart(*refused);
        return false;
    }
    ticket_ = std::get<ReadTicket>(begun);
    downloading_ = true;
    ResetTransferInfo();
    if (!Wait)
        return true;
    const std::weak_ptr<const bool> alive = alive_;
    const bool isOver = pump_.RunUntil([&] { return alive.expired() || !downloading_; });
    return isOver && !alive.expired() && saved_;
}

void DownloadEngine::HandleRefusedStart(const ReadRefused& refused)
{
    const std::weak_ptr<const bool> alive = alive_;
    RaiseDLError(DownloadErrorCode::Unavailable, refused.description);
    if (alive.expired())
        return;
    const std::string number = std::to_string(refused.number);
    Raise(hooks_.ShowStartFailure, "bkDLControl Internal Error: " + number,
        number + "Error: \r\n" + refused.description);
}

void DownloadEngine::GoIdle()
{
    ticket_ = 0;
    downloading_ = false;
    percent_ = 0;
    Repaint();
}

void DownloadEngine::CancelDownload()
{
    if (!downloading_)
        return;
    reader_.Cancel(ticket_);
    GoIdle();
    Raise(Events.DLCanceled);
}

void DownloadEngine::RaiseDLError(DownloadErrorCode code, const std::string& text)
{
    GoIdle();
    if (Raise(Events.DLError, static_cast<std::int32_t>(code), text))
        Raise(Events.DLComplete, 0);
}

void DownloadEngine::AsyncReadProgress(const AsyncProperty& property)
{
    const std::weak_ptr<const bool> alive = alive_;
    HandleStatus(property);
    if (!alive.expired())
        Repaint();
}

void DownloadEngine::HandleStatus(const AsyncProperty& property)
{
    switch (property.StatusCode) {
    case ReadStatusCode::Error: RaiseDLError(DownloadErrorCode::Unknown, property.Value); break;
    case ReadStatusCode::Connecting:
        connectionAddress_ = property.Status;
        Raise(Events.DLConnected, property.Status);
        break;
    case ReadStatusCode::Redirecting: HandleRedirect(property.Status); break;
    case ReadStatusCode::BeginningData: {
        fileSize_ = property.BytesMax;
        const ReadTicket mine = ticket_;
        if (Raise(Events.DLFileSize, property.BytesMax) && ticket_ == mine) // not cancelled by the handler
            Raise(Events.DLBeginDownload);
        break;
    }
    case ReadStatusCode::DataArriving:
    case ReadStatusCode::EndOfData: HandleProgress(property); break;
    case ReadStatusCode::MimeTypeKnown:
        mimeType_ = property.Status;
        Raise(Events.DLMIMEType, property.Status);
        break;
    case ReadStatusCode::CacheFileKnown:
        cacheFile_ = property.Status;
        Raise(Events.DLCacheFile, property.Status);
        break;
    }
}

void DownloadEngine::HandleRedirect(const std::string& target)
{
    redirectFile_ = target;
    if (failOnRedirect_) {
        reader_.Cancel(ticket_);
        RaiseDLError(DownloadErrorCode::Redirected, "Redirected to " + target);
    } else {
        Raise(Events.DLRedirect, target);
    }
}

void DownloadEngine::HandleProgress(const AsyncProperty& property)
{
    percent_ = property.BytesMax > 0
        ? static_cast<float>(static_cast<double>(property.BytesRead) / static_cast<double>(property.BytesMax))
        : 0.0F;
    bytesRead_ = property.BytesRead;
    Raise(Events.DLProgress, percent_, property.BytesRead, property.BytesMax);
}

void DownloadEngine::AsyncReadComplete(const AsyncProperty& property)
{
    if (property.BytesRead == 0) {
        RaiseDLError(DownloadErrorCode::ZeroBytes, "Zero bytes retrieved");
        return;
    }
    if (!redirectFile_.empty() && renameOnRedirect_)
        RenameForRedirect();
    const auto failure
        = property.File ? property.File->SaveAs(saveFileName_) : ReplaceFile(saveFileName_, property.Value);
    if (failure) {
        RaiseDLError(DownloadErrorCode::FileSave, *failure + " [" + saveFileName_ + "]");
        return;
    }
    saved_ = true;
    const ReadTicket mine = ticket_;
    if (Raise(Events.DLComplete, property.BytesRead) && ticket_ == mine) // not cancelled by the handler
        GoIdle();
}

} // namespace vantro
