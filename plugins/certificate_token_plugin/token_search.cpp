// SPDX-License-Identifier: MIT
#include "token_search.h"

#include "modules.h"
#include "session.h"
#include "token.h"

#include "plugins/common/failure.h"

#include <algorithm>
#include <deque>

namespace plugins {

namespace {

// Throws Failure: NotFound, or Ambiguous if the request selects one token and several match.
void checkTokens(const std::vector<Token>& aTokens, const TokenRequest& aRequest) {
    if (aTokens.empty()) {
        throw Failure(ErrorCode::NotFound, aRequest.tokenLabel
                                               ? "no token \"" + *aRequest.tokenLabel + '"'
                                               : "no such token");
    }
    if (aTokens.size() == 1 || !aRequest.namesToken()) return;
    throw Failure(ErrorCode::Ambiguous, std::to_string(aTokens.size()) +
                                            " tokens match, among them " + aTokens[0].name +
                                            " and " + aTokens[1].name);
}

bool hasAnswer(const CertificateSource& aSource, const Selectors& aSelectors) {
    const auto count = std::count_if(
        aSource.certificates.begin(), aSource.certificates.end(),
        [&](const Certificate& aCertificate) { return matches(aSelectors, aCertificate); });
    return count > aSelectors.index.value_or(0);
}

// The certificates of several tokens, and the sessions to read them.
class Search {
public:
    explicit Search(const std::vector<Token>& aTokens) : mTokens(aTokens) {
        for (const auto& token : aTokens) mSessions.emplace_back(token);
    }

    CertificateSource read() const {
        CertificateSource source;
        source.name = mTokens.size() == 1 ? mTokens.front().name : "the tokens";
        for (std::size_t token = 0; token < mSessions.size(); ++token) {
            const auto first = source.certificates.size();
            mSessions[token].readCertificates(source);
            for (auto i = first; i < source.certificates.size(); ++i) {
                source.certificates[i].token = token;
            }
        }
        return source;
    }

    /// Logs in to the only token that may hide certificates. Returns false if there is none.
    bool logIn(const TokenRequest& aRequest) {
        const auto hides = [](const Token& aToken) { return aToken.hidesObjects(); };
        const auto count = std::count_if(mTokens.begin(), mTokens.end(), hides);
        if (count == 0) return false;
        const auto token = std::find_if(mTokens.begin(), mTokens.end(), hides);
        if (!aRequest.pin) {
            throw Failure(ErrorCode::PasswordRequired,
                          token->name + ": no certificate matches without a PIN");
        }
        if (count > 1) {
            throw Failure(ErrorCode::Ambiguous,
                          std::to_string(count) +
                              " tokens require a PIN: select one with \"token\"");
        }
        const auto index = static_cast<std::size_t>(token - mTokens.begin());
        mSessions[index].logIn(*aRequest.pin, aRequest.allowFinalTry);
        return true;
    }

private:
    const std::vector<Token>& mTokens;
    std::deque<Session> mSessions; // one for each token; never moved
};

} // namespace

Members searchTokens(const TokenRequest& aRequest) {
    const auto modules =
        aRequest.modulePath
            ? Modules::loadFile(*aRequest.modulePath)
            : Modules::loadRegistered(aRequest.uri ? aRequest.uri->getModuleName() : std::nullopt);
    const auto tokens = findTokens(modules.get(), aRequest);
    checkTokens(tokens, aRequest);
    Search search(tokens);
    auto source = search.read();
    const bool wantsHidden = aRequest.selectors.list && aRequest.pin;
    if (!hasAnswer(source, aRequest.selectors) || wantsHidden) {
        if (search.logIn(aRequest)) source = search.read();
    }
    return answerSelection(aRequest.selectors, source);
}

} // namespace plugins
