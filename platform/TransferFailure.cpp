#include "platform/TransferFailure.h"

#include <cstddef>

namespace vantro {

std::string FailureSentence(CURLcode code, const std::string& host)
{
    switch (code) {
    case CURLE_COULDNT_RESOLVE_HOST: return "The server " + host + " could not be found";
    case CURLE_COULDNT_RESOLVE_PROXY: return "The proxy server for " + host + " could not be found";
    case CURLE_COULDNT_CONNECT: return "No connection to " + host + " could be made";
    case CURLE_PROXY: return "The proxy server made no connection to " + host;
    case CURLE_OPERATION_TIMEDOUT: return host + " did not answer in time";
    case CURLE_PEER_FAILED_VERIFICATION: return "The certificate of " + host + " cannot be trusted";
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_SSL_CIPHER:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_ISSUER_ERROR:
    case CURLE_SSL_INVALIDCERTSTATUS: return "No secure connection to " + host + " could be made";
    case CURLE_GOT_NOTHING: return host + " closed the connection without an answer";
    case CURLE_SEND_ERROR:
    case CURLE_RECV_ERROR: return "The connection to " + host + " broke off";
    case CURLE_PARTIAL_FILE: return "The connection broke off before the whole file had arrived";
    case CURLE_UNSUPPORTED_PROTOCOL: // an answer as before HTTP had a head
    case CURLE_WEIRD_SERVER_REPLY: return "The answer of " + host + " is not HTTP";
    case CURLE_OUT_OF_MEMORY: return "Not enough memory for the file";
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
