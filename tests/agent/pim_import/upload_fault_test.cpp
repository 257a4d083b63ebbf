#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string_view>

#include "handheld/base/com_object.h"
#include "tests/support/fault_runs.h"
#include "tests/support/upload_runs.h"

namespace corvane::testing {
namespace {

using namespace ce;

// What cannot be looked up counts as absent: the record then is a new one, or deletes nothing.
bool IsOfAContactLookup(std::string_view call) {
  constexpr std::array kLookups{
      std::string_view("IXMLDOMNamedNodeMap::getNamedItem"),
      std::string_view("IXMLDOMNode::get_nodeValue"),
      std::string_view("IPOutlookApp::GetItemFromOid"),
      std::string_view("QueryInterface"),
      std::string_view("sqlite3_prepare"),
      std::string_view("sqlite3_step:read"),
  };
  return std::ranges::any_of(kLookups,
                             [&](std::string_view lookup) { return call.starts_with(lookup); });
}

class UploadFaults : public PimTest {
 protected:
  static constexpr std::u16string_view kOld = u"old";
  static constexpr std::u16string_view kNew = u"new";

  void Prepare() {
    for (const LONG oid : store_->Oids()) store_->Delete(oid);
    changed_ = store_->AddNamed(kOld);
    deleted_ = store_->AddNamed(kOld);
    const std::string name = "<FIRST_NAME>new</FIRST_NAME>";
    document_ = RootOf(ContactRecord(name, OidTag(changed_)) + ContactRecord(name) +
                       ContactRecord("", OidTag(deleted_) + " Delete='1'"));
  }

  bool Has(LONG oid) { return static_cast<bool>(store_->Get(oid)); }
  std::u16string Name(LONG oid) { return store_->Text(oid, &IContact::get_FirstName); }

  // A text that could not be copied was taken for an empty one: its code is positive.
  void ExpectStored(LONG oid, const std::string& call) {
    ASSERT_TRUE(Has(oid));
    if (!call.starts_with("SysAllocString")) {
      EXPECT_EQ(Name(oid), kNew);
    }
  }

  void ExpectHonestChange(const RecordReply& reply, const std::string& call) {
    if (reply.result >= 0) {
      EXPECT_EQ(reply.oid, changed_);
      ExpectStored(changed_, call);
    } else {
      EXPECT_EQ(reply.oid, 0);
      // An identifier that cannot be had after the change was saved fails the record, too.
      EXPECT_EQ(Name(changed_), call == "IContact::get_Oid" ? kNew : kOld);
    }
  }
  void ExpectHonestAddition(const RecordReply& reply, const std::string& call) {
    if (reply.result >= 0) {
      ExpectStored(reply.oid, call);
    } else {
      EXPECT_EQ(reply.oid, 0);
    }
  }
  void ExpectHonestDeletion(const RecordReply& reply, const std::string& call) {
    // A flag whose text cannot be had counts as absent, which makes the record a change.
    if (call.starts_with("SysAllocString")) return;
    EXPECT_EQ(Has(deleted_), reply.result < 0);
    // As sent, unless not even that could be read.
    EXPECT_TRUE(reply.oid == deleted_ || (reply.oid == 0 && reply.result < 0));
  }

  void ExpectHonest(const StreamedAnswer& streamed, const std::string& call) {
    if (call == "send") return;  // a reply is cut off with the connection
    const UploadAnswer answer = ReadUpload(streamed);
    ASSERT_LE(answer.replies.size(), 3u);
    if (answer.replies.size() < 3) {
      EXPECT_NE(answer.status, S_OK) << "a request that ends early says so";
    }
    if (IsOfAContactLookup(call)) return;
    if (answer.replies.size() > 0) ExpectHonestChange(answer.replies[0], call);
    if (answer.replies.size() > 1) ExpectHonestAddition(answer.replies[1], call);
    if (answer.replies.size() > 2) ExpectHonestDeletion(answer.replies[2], call);
  }

  LONG changed_ = 0;
  LONG deleted_ = 0;
  std::string document_;
};

TEST_F(UploadFaults, RepliesAreHonestWhicheverCallFails) {
  Prepare();
  const LONG objects = host::LiveComObjects();
  const auto run = [&] {
    return RunStreamed(UploadPIMRecords, {}, {ChunkBytes(document_) + Word(0)});
  };
  const auto calls = FailEachCall(ERROR_NOT_ENOUGH_MEMORY, run,
                                  [&](const StreamedAnswer& answer, const std::string& call) {
                                    ExpectHonest(answer, call);
                                    EXPECT_EQ(host::LiveComObjects(), objects);
                                    if (call.empty()) {
                                      EXPECT_EQ(answer.bytes.size(), 3 * 8u);
                                      EXPECT_EQ(answer.status, S_OK);
                                    }
                                    Prepare();
                                  });
  EXPECT_GT(calls, 300u);
}

}  // namespace
}  // namespace corvane::testing
