#pragma once

#include "base/EventPump.h"
#include "platform/AsyncRead.h"
#include "web/WebAddress.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace vantro {

class PropertyBag;

// The numbers that DLError carries as its first argument.
enum class DownloadErrorCode : std::int32_t {
    Unavailable = 1,
    Redirected = 2,
    ZeroBytes = 3,
    FileSave = 4,
    Unknown = 99
};

// What a download tells its host. A handler left empty is skipped. All are called on the interface thread,
// and any of them may begin or cancel transfers or destroy the engine.
struct DownloadEvents {
    // `percent` is a fraction: 0.5 is half the file. It is 0 while the total is not known.
    std::function<void(float percent, std::int32_t bytesRead, std::int32_t totalBytes)> DLProgress;
    std::function<void()> DLCanceled;
    std::function<void(std::int32_t e, const std::string& error)> DLError;
    std::function<void(std::int32_t bytes)> DLComplete;
    std::function<void(const std::string& connAddr)> DLConnected;
    std::function<void(const std::string& connAddr)> DLRedirect;
    std::function<void(const std::string& fileName)> DLCacheFile;
    std::function<void(const std::string& mimeType)> DLMIMEType;
    std::function<void(std::int32_t bytes)> DLFileSize;
    std::function<void()> DLBeginDownload;
};

// What the engine asks of the widget that shows it. One left empty is skipped. Interface thread.
struct DownloadHooks {
    std::function<void()> Refresh; // repaint; must not destroy the engine
    // The message box of a start that was refused, the last act of that BeginDownload.
    std::function<void(const std::string& title, const std::string& text)> ShowStartFailure;
    std::function<void(std::string_view name)> PropertyChanged; // the saved form is out of date
};

// Fetches one address into one file in the background and tells its host how it goes. Interface thread only.
//
// A transfer that was started ends in exactly one of three ways: the file is written and DLComplete(bytes)
// raised; DLError and then DLComplete(0); or, after CancelDownload, DLCanceled alone. Downloading() is still
// true during the DLComplete of a success and already false in the events of an error, from which a new
// transfer may be begun. Destroying the engine abandons its transfer without an event.
class DownloadEngine final : private AsyncReadClient {
public:
    // `reader` and `pump` must outlive the engine.
    DownloadEngine(AsyncRead& reader, EventPump& pump, DownloadHooks hooks = {});
    ~DownloadEngine() override;
    DownloadEngine(const DownloadEngine&) = delete;
    DownloadEngine& operator=(const DownloadEngine&) = delete;

    DownloadEvents Events;

    // The present or latest transfer.
    [[nodiscard]] bool Downloading() const { return downloading_; }
    [[nodiscard]] bool Saved() const { return saved_; } // the last transfer was written to SaveFileName()
    [[nodiscard]] float Percent() const { return percent_; } // fraction received, 0 when none is under way
    [[nodiscard]] std::int32_t BytesRead() const { return bytesRead_; }
    [[nodiscard]] std::int32_t FileSize() const { return fileSize_; } // announced bytes, 0 when unknown
    [[nodiscard]] const std::string& ConnectionAddress() const { return connectionAddress_; }
    [[nodiscard]] const std::string& RedirectFile() const { return redirectFile_; }
    [[nodiscard]] const std::string& MIMEType() const { return mimeType_; }
    [[nodiscard]] const std::string& CacheFile() const { return cacheFile_; }

    // The full path of the file: SaveFilePath and whatever follows the last "/" of FileURL, unchanged, query
    // text included; "" while either is "". After a redirect under RenameOnRedirect it names the target's
    // file until one of the two is assigned again.
    [[nodiscard]] const std::string& SaveFileName() const { return saveFileName_; }

    [[nodiscard]] const std::string& FileURL() const { return fileUrl_; }
    void SetFileURL(const std::string& address);
    [[nodiscard]] const std::string& SaveFilePath() const { return saveFilePath_; }
    void SetSaveFilePath(const std::string& folder);
    // A redirect ends the transfer with error 2.
    [[nodiscard]] bool FailOnRedirect() const { return failOnRedirect_; }
    void SetFailOnRedirect(bool fail);
    // After a redirect, save under the target's file name. Reads false while FailOnRedirect is set, whatever
    // was stored.
    [[nodiscard]] bool RenameOnRedirect() const { return !failOnRedirect_ && renameOnRedirect_; }
    void SetRenameOnRedirect(bool rename);
    [[nodiscard]] bool ShowProgress() const { return showProgress_; }
    void SetShowProgress(bool show);

    // False, without any event, when a transfer is running or FileURL or SaveFilePath is "". False after
    // DLError(1), DLComplete(0) and the message box when the address is none that can be read. Otherwise true
    // at once, or with `Wait` once the transfer is over: whether it was saved. A wait also ends, with false,
    // when the program closes or the engine is destroyed; the host's events are handled meanwhile.
    bool BeginDownload(bool Wait = false);
    // Stops the transfer and raises DLCanceled; does nothing when none is running.
    void CancelDownload();

    // The five settings, "FileURL" to "ShowProgress", in the order of the saved form. Reading raises no
    // PropertyChanged and derives SaveFileName; RenameOnRedirect is kept as the plain flag.
    void ReadProperties(const PropertyBag& bag);
    void WriteProperties(PropertyBag& bag) const;

private:
    void AsyncReadProgress(const AsyncProperty& property) override;
    void AsyncReadComplete(const AsyncProperty& property) override;

    void HandleStatus(const AsyncProperty& property);
    void HandleRedirect(const std::string& target);
    void HandleProgress(const AsyncProperty& property);
    void HandleRefusedStart(const ReadRefused& refused);
    void RaiseDLError(DownloadErrorCode code, const std::string& text);
    void GoIdle();
    void DeriveSaveFileName();
    void RenameForRedirect();
    void ResetTransferInfo();
    void Repaint();
    void MarkChanged(std::string_view name);
    // False when the handler destroyed the engine: the caller then returns at once.
    template <class... Parameters, class... Arguments>
    bool Raise(const std::function<void(Parameters...)>& event, const Arguments&... arguments);

    AsyncRead& reader_;
    EventPump& pump_;
    DownloadHooks hooks_;

    std::string fileUrl_;
    std::string saveFilePath_;
    std::string saveFileName_;
    bool failOnRedirect_ = true;
    bool renameOnRedirect_ = true;
    bool showProgress_ = true;

    ReadTicket ticket_ = 0; // of the transfer under way
    bool downloading_ = false;
    bool saved_ = false;
    float percent_ = 0;
    std::int32_t bytesRead_ = 0;
    std::int32_t fileSize_ = 0;
    std::string connectionAddress_;
    std::string redirectFile_;
    std::string mimeType_;
    std::string cacheFile_;

    std::shared_ptr<const bool> alive_
        = std::make_shared<const bool>(true); // watched across calls to the host
};

} // namespace vantro
