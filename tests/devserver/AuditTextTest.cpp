#include "devserver/AuditText.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using devserver::AuditEntry;
using devserver::auditText;

TEST(AuditText, ColumnsAreAligned) {
    const std::vector<AuditEntry> entries{
        {0, "admin", "PUT", "/a", "why not", 201, 0},
        {1767225600123, "b\xc3\xbcro", "DELETE", "/longer", "", 404, 8701},
    };
    EXPECT_EQ(
        auditText(entries),
        "WHEN                      WHO    METHOD  STATUS  CODE  RESOURCE  REASON\n"
        "1970-01-01T00:00:00.000Z  admin  PUT     201     0     /a        why not\n"
        "2026-01-01T00:00:00.123Z  b\xc3\xbcro   DELETE  404     8701  /longer\n");
}

TEST(AuditText, NothingButTheHeadingWhenThereIsNothing) {
    EXPECT_EQ(auditText({}), "WHEN  WHO  METHOD  STATUS  CODE  RESOURCE  REASON\n");
}

TEST(AuditText, ControlCharactersCannotForgeALine) {
    const std::string text =
        auditText({{0, "a\x1b[2J", "PUT", "/\xff", "x\n1970 admin DELETE", 200, 0}});
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 2);
    EXPECT_NE(text.find("a\\x1b[2J"), std::string::npos);
    EXPECT_NE(text.find("/\\xff"), std::string::npos);
    EXPECT_NE(text.find("x\\x0a1970 admin"), std::string::npos);
}

}  // namespace
