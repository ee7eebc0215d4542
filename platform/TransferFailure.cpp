#include "platform/TransferFailure.h"

#include "base/Words.h"

#include <cstddef>

namespace vantro {

std::string FailureSentence(CURLcode code, const std::string& host)
{
    switch (code) {
    case CURLE_COULDNT_RESOLVE_HOST: return Words("The server %1 could not be found", {host});
    case CURLE_COULDNT_RESOLVE_PROXY: return Words("The proxy server for %1 could not be found", {host});
    case CURLE_COULDNT_CONNECT: return Words("No connection to %1 could be made", {host});
    case CURLE_PROXY: return Words("The proxy server made no connection to %1", {host});
    case CURLE_OPERATION_TIMEDOUT: return Words("%1 did not answer in time", {host});
    case CURLE_PEER_FAILED_VERIFICATION: return Words("The certificate of %1 cannot be trusted", {host});
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_SSL_CIPHER:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_ISSUER_ERROR:
    case CURLE_SSL_INVALIDCERTSTATUS: return Words("No secure connection to %1 could be made", {host});
    case CURLE_GOT_NOTHING: return Words("%1 closed the connection without an answer", {host});
    case CURLE_SEND_ERROR:
    case CURLE_RECV_ERROR: return Words("The connection to %1 broke off", {host});
    case CURLE_PARTIAL_FILE: return Words("The connection broke off before the whole file had arrived");
    case CURLE_UNSUPPORTED_PROTOCOL: // an answer as before HTTP had a head
    case CURLE_WEIRD_SERVER_REPLY: return Words("The answer of %1 is not HTTP", {host});
    case CURLE_OUT_OF_MEMORY: return Words("Not enough memory for the file");
    default: return curl_easy_strerror(code);
    }
}

std::string Shortened(std::string_view text)
{
    constexpr std::size_t longest = 200;
    std::string result(text.substr(0, longest));
    return text.size() > longest ? result + "..." : result;
}

} // namespace vantro
