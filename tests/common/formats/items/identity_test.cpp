#include "common/formats/items/identity.h"

#include <gtest/gtest.h>

#include <functional>

#include "tests/common/formats/items/message_support.h"

namespace formats::testing {
namespace {

TextMessage Received() {
  TextMessage message;
  message.time = TimeOf("2008-02-15T13:45:01.250Z");
  message.from = {"+49171550101", "Åsa"};
  message.text = "Café?\nToday";
  return message;
}

TextMessage Sent() {
  TextMessage message = Received();
  message.folder = "/Sent Items";
  message.flags = FromFlags(0x25);
  message.from = {};
  message.to = {{"1", ""}, {"2", ""}};
  return message;
}

Call Answered() {
  Call call;
  call.number = "+49171550101";
  call.start = TimeOf("2008-02-15T13:45:01.250Z");
  call.end = TimeOf("2008-02-15T13:46:01Z");
  call.connected = true;
  return call;
}

template <typename Item>
struct ChangeCase {
  const char* name;
  std::function<void(Item&)> change;
  bool sameItem;
};
template <typename Item>
void ExpectChange(const Item& item, const ChangeCase<Item>& test) {
  Item changed = item;
  test.change(changed);
  EXPECT_EQ(IdentityOf(changed) == IdentityOf(item), test.sameItem);
}

using MessageChange = ChangeCase<TextMessage>;
class MessageIdentityTest : public ::testing::TestWithParam<MessageChange> {};
TEST_P(MessageIdentityTest, IsOfWhatMakesTheMessage) {
  ExpectChange(Received(), GetParam());
}

INSTANTIATE_TEST_SUITE_P(
    MessageIdentity, MessageIdentityTest,
    ::testing::Values(
        MessageChange{"Nothing", [](auto&) {}, true},
        MessageChange{"LineBreak", [](auto& m) { m.text = "Café?\r\nToday"; }, true},
        MessageChange{"Read", [](auto& m) { m.flags.read = true; }, true},
        MessageChange{"Folder", [](auto& m) { m.folder = "/Inbox/Old"; }, true},
        MessageChange{"Name", [](auto& m) { m.from.name = "Å. B."; }, true},
        MessageChange{"Milliseconds", [](auto& m) { *m.time += std::chrono::milliseconds(700); },
                      true},
        MessageChange{"Recipient",
                      [](auto& m) {
                        m.to = {{"1", ""}};
                      },
                      true},
        MessageChange{"NumberArrangedOtherwise",
                      [](auto& m) { m.from.address = "+49 (171) 55-01.01"; }, true},
        MessageChange{"Second", [](auto& m) { *m.time += std::chrono::seconds(1); }, false},
        MessageChange{"NoTime", [](auto& m) { m.time.reset(); }, false},
        MessageChange{"Sender", [](auto& m) { m.from.address = "+49171550102"; }, false},
        MessageChange{"Text", [](auto& m) { m.text += "!"; }, false},
        MessageChange{"Direction", [](auto& m) { m.flags.fromMe = true; }, false},
        MessageChange{"Class", [](auto& m) { m.messageClass = MessageClass::kMms; }, false}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(MessageIdentity, OfASentMessageIsOfItsRecipientsInAnyOrder) {
  TextMessage other = Sent();
  std::swap(other.to[0], other.to[1]);
  EXPECT_EQ(IdentityOf(other), IdentityOf(Sent()));
  other.from.address = "me";
  EXPECT_EQ(IdentityOf(other), IdentityOf(Sent()));
  other.to.pop_back();
  EXPECT_NE(IdentityOf(other), IdentityOf(Sent()));
}

TEST(MessageIdentity, KeepsWordsAsTheyAre) {
  TextMessage word = Received();
  word.from.address = "A-B";
  TextMessage other = word;
  other.from.address = "AB";
  EXPECT_NE(IdentityOf(word), IdentityOf(other));
}

// Written down where messages are kept, so that it must not change.
TEST(MessageIdentity, StaysTheSame) {
  EXPECT_EQ(IdentityOf(Received()), "665df3b3cd21d5ac1c95a17e2ef1b37b");
  EXPECT_EQ(IdentityOf(Answered()), "82a90bd7bbfd0c713cc35037cbcdc1bb");
}

using CallChange = ChangeCase<Call>;
class CallIdentityTest : public ::testing::TestWithParam<CallChange> {};
TEST_P(CallIdentityTest, IsOfWhatMakesTheCall) {
  ExpectChange(Answered(), GetParam());
}

INSTANTIATE_TEST_SUITE_P(
    CallIdentity, CallIdentityTest,
    ::testing::Values(
        CallChange{"Nothing", [](auto&) {}, true},
        CallChange{"Name", [](auto& c) { c.name = "Åsa"; }, true},
        CallChange{"Note", [](auto& c) { c.note = "a"; }, true},
        CallChange{"End", [](auto& c) { c.end.reset(); }, true},
        CallChange{"NumberArrangedOtherwise", [](auto& c) { c.number = "+49 171 550101"; }, true},
        CallChange{"Number", [](auto& c) { c.number = "+49171550102"; }, false},
        CallChange{"Start", [](auto& c) { *c.start += std::chrono::seconds(1); }, false},
        CallChange{"Direction", [](auto& c) { c.outgoing = true; }, false}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(FileAs, IsLeftOutWhereItIsAsDerived) {
  const auto left = [](std::string first, std::string last, std::string company,
                       std::string fileAs) {
    Contact contact;
    contact[ContactField::kFirstName] = std::move(first);
    contact[ContactField::kLastName] = std::move(last);
    contact[ContactField::kCompanyName] = std::move(company);
    contact[ContactField::kFileAs] = std::move(fileAs);
    const Contact bare = WithoutDerivedFileAs(contact);
    EXPECT_EQ(WithFileAs(bare), WithFileAs(contact));
    return bare[ContactField::kFileAs];
  };
  EXPECT_EQ(left("Anna", "Berg", "", "Berg, Anna"), "");
  EXPECT_EQ(left("Anna", "", "Yard", "Anna"), "");
  EXPECT_EQ(left("", "", "Yard", "Yard"), "");
  EXPECT_EQ(left("Anna", "Berg", "", "Anna Berg"), "Anna Berg");
  EXPECT_EQ(left("", "", "", "Anna"), "Anna");
  EXPECT_EQ(left("Anna", "Berg", "", ""), "");
}

}  // namespace
}  // namespace formats::testing
