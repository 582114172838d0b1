// What goes before a change is the same for the operations that change a host: the rules on which
// host is meant, and its look-up.

#include "hostmgmt/operations/AkHostMgmtAdd.h"
#include "hostmgmt/operations/AkHostMgmtAddHost.h"
#include "hostmgmt/operations/AkHostMgmtComment.h"
#include "hostmgmt/operations/AkHostMgmtDelete.h"
#include "hostmgmt/operations/AkHostMgmtReissueCert.h"
#include "hostmgmt/operations/AkHostMgmtUpdateHost.h"
#include "support/TestChange.h"

#include <gtest/gtest.h>

namespace {

using Options = std::vector<std::string>;

Options operator+(Options first, const Options& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

/// An operation on a host, and what else its command line needs.
template <typename Operation>
struct Setting {
    using Class = Operation;
    Options operation;
    Options details;
};

struct Add : Setting<AkHostMgmtAdd> {
    Add() : Setting{{"-add"}, {"-mappingname", "m"}} {}
};
struct Delete : Setting<AkHostMgmtDelete> {
    Delete() : Setting{{"-delete"}, {"-mappingname", "m"}} {}
};
struct AddComment : Setting<AkHostMgmtComment> {
    AddComment() : Setting{{"-addcomment"}, {"-comment", "c"}} {}
};
struct DeleteComment : Setting<AkHostMgmtComment> {
    DeleteComment() : Setting{{"-deletecomment"}, {}} {}
};
struct ReissueCert : Setting<AkHostMgmtReissueCert> {
    ReissueCert() : Setting{{"-allowautoreissuecert"}, {"-autoreissue", "1"}} {}
};
struct UpdateHost : Setting<AkHostMgmtUpdateHost> {
    UpdateHost() : Setting{{"-updatehost"}, {"-newhostname", "h"}} {}
};

template <typename OfOperation>
class HostRules : public testing::Test {
protected:
    std::string refusal(const Options& options) const {
        return loggedRefusalOf<typename OfOperation::Class>(
            setting_.operation + setting_.details + options);
    }
    std::string refusalWithoutDetails(const Options& options) const {
        return loggedRefusalOf<typename OfOperation::Class>(setting_.operation + options);
    }

    Change run(const Options& options, const std::deque<support::FakeReply>& replies) const {
        return change<typename OfOperation::Class>(
            setting_.operation + setting_.details + options, replies);
    }

private:
    OfOperation setting_;
};

using Operations = testing::Types<Add, Delete, AddComment, DeleteComment, ReissueCert, UpdateHost>;
TYPED_TEST_SUITE(HostRules, Operations);

TYPED_TEST(HostRules, OneHostByItsIdOrByAName) {
    EXPECT_EQ(this->refusal({"-hostid", "x"}), "");
    EXPECT_EQ(this->refusal({"-i", "x"}), "");
    EXPECT_EQ(this->refusal({"-host", "x"}), "");
    EXPECT_EQ(this->refusal({"-n", "x"}), "");
    EXPECT_EQ(
        this->refusal({"-i", "x", "-n", "x"}),
        "(logged) Please select exactly one of these options:hostid host");
    EXPECT_EQ(
        this->refusal({}), "(logged) Either hostid or host is required and was not specified");
}

TYPED_TEST(HostRules, WhichHostComesBeforeWhatIsToBeDone) {
    EXPECT_EQ(
        this->refusalWithoutDetails({"-host", "a/b", "-hostid", "c"}),
        "(logged) Please select exactly one of these options:hostid host");
    EXPECT_EQ(
        this->refusalWithoutDetails({}),
        "(logged) Either hostid or host is required and was not specified");
}

TYPED_TEST(HostRules, HelpComesFirstAndIsNotLogged) {
    EXPECT_EQ(this->refusal({"-h"}), "Help requested.");
    EXPECT_EQ(this->refusalWithoutDetails({"-H", "-i", "/", "-n", "/"}), "Help requested.");
}

TYPED_TEST(HostRules, NoSlashes) {
    const std::string inName = "(logged) Host name must not contain slashes ('/' or '\\')";
    const std::string inId = "(logged) Host ID must not contain slashes ('/' or '\\')";
    EXPECT_EQ(this->refusal({"-host", "a/b"}), inName);
    EXPECT_EQ(this->refusal({"-n", "\\"}), inName);
    EXPECT_EQ(this->refusal({"-hostid", "/x"}), inId);
    EXPECT_EQ(this->refusal({"-i", "x\\"}), inId);
    EXPECT_EQ(this->refusal({"-n", std::string(1024, 'x') + "/"}), inName) << "before the length";
}

TYPED_TEST(HostRules, NamesHaveAtMost1024BytesAndIdsAnyNumber) {
    const std::string tooLong = "(logged) The value for the following parameter is too long.\nhost";
    EXPECT_EQ(this->refusal({"-host", std::string(1024, 'x')}), "");
    EXPECT_EQ(this->refusal({"-host", std::string(1025, 'x')}), tooLong);
    EXPECT_EQ(this->refusal({"-n", std::string(1025, 'x')}), tooLong);
    EXPECT_EQ(this->refusal({"-i", std::string(5000, 'x')}), "");
}

TYPED_TEST(HostRules, AHostThatIsNotFoundIsNotChanged) {
    const Change unknown = this->run({"-host", "x"}, {{0, 200, R"({"hosts":[]})"}});
    EXPECT_EQ(unknown.requests.size(), 1U);
    EXPECT_EQ(unknown.result, 8701);
    EXPECT_EQ(unknown.out, "");
    const Change ambiguous = this->run({"-n", "x"}, {{0, 200, R"({"hosts":[{},{}]})"}});
    EXPECT_EQ(ambiguous.requests.size(), 1U);
    EXPECT_EQ(ambiguous.result, 8900);
}

TYPED_TEST(HostRules, OptionsOfNoneAreUnknown) {
    EXPECT_EQ(this->refusal({"-i", "x", "-force"}), "An invalid option was used.\nforce");
    EXPECT_EQ(this->refusal({"-i", "x", "-json"}), "An invalid option was used.\njson");
}

}  // namespace
