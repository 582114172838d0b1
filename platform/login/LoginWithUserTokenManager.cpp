#include "arkeon/LoginWithUserTokenManager.h"

#include "config/Paths.h"
#include "login/LoginFile.h"

#include <ctime>

LoginWithUserTokenManager::LoginWithUserTokenManager(
    int port, const std::string& /*user*/, const std::string& /*password*/,
    const std::string& /*domain*/, const std::string& /*domainType*/, int /*certType*/)
    : port_(port) {}

arkeon::Status
LoginWithUserTokenManager::findToken(const std::string& server, std::string& token) const {
    token.clear();
    arkeon::LoginFile logins;
    arkeon::Status result = logins.read(arkeon::loginFile());
    if (result == arkeon::status::success) {
        result = logins.findToken(server, port_, std::time(nullptr), token);
    }
    return result;
}
