// The flags of messages and calls, and the places of messages.
#include "common/formats/items/message.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "common/formats/items/call.h"
#include "common/formats/items/message_places.h"

namespace formats {
namespace {

TEST(MessageFlags, StandForTheirBits) {
  EXPECT_EQ(ToFlags({}), 0);
  EXPECT_EQ(ToFlags({.read = true}), 0x01);
  EXPECT_EQ(ToFlags({.unmodified = true}), 0x02);
  EXPECT_EQ(ToFlags({.submitted = true}), 0x04);
  EXPECT_EQ(ToFlags({.unsent = true}), 0x08);
  EXPECT_EQ(ToFlags({.hasAttachment = true}), 0x10);
  EXPECT_EQ(ToFlags({.fromMe = true}), 0x20);
  EXPECT_EQ(ToFlags({.read = true, .submitted = true, .fromMe = true}), 37);
}

TEST(MessageFlags, KeepsBitsWithoutAName) {
  EXPECT_EQ(FromFlags(0x41).others, 0x40u);
  EXPECT_EQ(FromFlags(-1).others, 0xFFFFFFC0u);
  EXPECT_EQ(ToFlags(FromFlags(-1)), -1);
}

RC_GTEST_PROP(MessageFlags, ComeBackFromAnyNumber, (std::int32_t number)) {
  RC_ASSERT(ToFlags(FromFlags(number)) == number);
}

TEST(CallFlags, StandForTheirBits) {
  Call call;
  call.outgoing = call.ended = true;
  EXPECT_EQ(ToCallFlags(call), 0x5u);
  SetCallFlags(call, 0xA);
  EXPECT_FALSE(call.outgoing);
  EXPECT_TRUE(call.connected);
  EXPECT_FALSE(call.ended);
  EXPECT_TRUE(call.roaming);
  EXPECT_EQ(ToCallFlags(call), 0xAu);
}

TEST(CallKind, IsMissedBeforeAnythingElse) {
  Call call;
  EXPECT_EQ(KindOf(call), CallKind::kIncoming);
  call.outgoing = true;
  EXPECT_EQ(KindOf(call), CallKind::kOutgoing);
  call.missed = true;
  EXPECT_EQ(KindOf(call), CallKind::kMissed);
}

struct PlaceCase {
  const char* name;
  MessageType type;
  const char* folder;
  std::int32_t flags;
  MessageType back;
};
class MessagePlaceTest : public ::testing::TestWithParam<PlaceCase> {};

TEST_P(MessagePlaceTest, IsFoundAndLedBack) {
  for (const bool read : {false, true}) {
    const MessagePlace place = PlaceOf(GetParam().type, read);
    EXPECT_EQ(place.folder, GetParam().folder);
    EXPECT_EQ(ToFlags(place.flags), GetParam().flags + (read ? 1 : 0));
    EXPECT_EQ(TypeOf(place.folder, place.flags), GetParam().back);
  }
}

INSTANTIATE_TEST_SUITE_P(
    MessagePlace, MessagePlaceTest,
    ::testing::Values(
        PlaceCase{"Received", MessageType::kReceived, "/Inbox", 0, MessageType::kReceived},
        PlaceCase{"Sent", MessageType::kSent, "/Sent Items", 0x24, MessageType::kSent},
        PlaceCase{"Draft", MessageType::kDraft, "/Drafts", 0x28, MessageType::kDraft},
        PlaceCase{"Outbox", MessageType::kOutbox, "/Outbox", 0x2C, MessageType::kOutbox},
        PlaceCase{"Failed", MessageType::kFailed, "/Outbox", 0x28, MessageType::kFailed},
        PlaceCase{"Queued", MessageType::kQueued, "/Outbox", 0x2C, MessageType::kOutbox}),
    [](const auto& test) { return std::string(test.param.name); });

struct TypeCase {
  const char* name;
  const char* folder;
  std::int32_t flags;
  MessageType type;
};
class MessageTypeTest : public ::testing::TestWithParam<TypeCase> {};

TEST_P(MessageTypeTest, FollowsFromFolderAndFlags) {
  EXPECT_EQ(TypeOf(GetParam().folder, FromFlags(GetParam().flags)), GetParam().type);
}

INSTANTIATE_TEST_SUITE_P(
    MessageType, MessageTypeTest,
    ::testing::Values(
        TypeCase{"ReceivedAnywhere", "/Deleted Items", 1, MessageType::kReceived},
        TypeCase{"ReceivedThoughInSentItems", "/Sent Items", 0, MessageType::kReceived},
        TypeCase{"SentInAFolderOfItsOwn", "/Inbox/Old", 0x21, MessageType::kSent},
        TypeCase{"SubfolderOfDrafts", "/Drafts/Poems", 0x20, MessageType::kDraft},
        TypeCase{"FolderThatBeginsLikeDrafts", "/Draftsman", 0x20, MessageType::kSent},
        TypeCase{"SubfolderOfOutbox", "/Outbox/Later", 0x24, MessageType::kOutbox},
        TypeCase{"UnsentElsewhere", "/Inbox", 0x28, MessageType::kDraft},
        TypeCase{"UnsentButNotFromMe", "/Inbox", 0x08, MessageType::kDraft},
        TypeCase{"NoFolder", "", 0x20, MessageType::kSent}),
    [](const auto& test) { return std::string(test.param.name); });

}  // namespace
}  // namespace formats
