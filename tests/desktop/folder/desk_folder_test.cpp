#include "desktop/folder/desk_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "tests/desktop/folder/folder_support.h"

namespace desktop::testing {
namespace {

using formats::Appointment;
using formats::Contact;
using formats::ContactField;
using formats::Task;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

using DeskFolderTest = FolderTest;

const std::string kAnna = Card("anna", "FN:Anna Berg\r\nN:Berg;Anna;;;\r\n");
const std::string kBert = Card("bert", "FN:Bert Tal\r\nN:Tal;Bert;;;\r\n");
const std::string kMeeting = Event("meet", "DTSTART:20261122T090000\r\nSUMMARY:Meeting\r\n");
const std::string kTodo = "BEGIN:VTODO\r\nUID:buy\r\nSUMMARY:Buy milk\r\nEND:VTODO\r\n";

Contact Named(const std::string& uid, const std::string& first) {
  Contact contact;
  contact.uid = uid;
  contact[ContactField::kFirstName] = first;
  return contact;
}

std::vector<std::string> NamesOf(const std::vector<DeskItem>& items) {
  std::vector<std::string> names;
  for (const DeskItem& item : items)
    names.push_back(item.file.string() + " " + DisplayName(item.item));
  return names;
}

std::vector<std::string> KeysOf(const std::vector<DeskItem>& items) {
  std::vector<std::string> keys;
  for (const DeskItem& item : items) keys.push_back(item.key);
  return keys;
}

TEST(DeskFolder, ReadsContactsEventsAndTasksOfItsThreeSubfolders) {
  const DeskFolderTest desk;
  desk.Write("contacts/people.vcf", kAnna + kBert);
  desk.Write("calendar/meeting.ics", Calendar(kMeeting));
  desk.Write("tasks/buy.ICS", Calendar(kTodo));
  const DeskContents contents = desk.Contents();
  EXPECT_THAT(NamesOf(desk.Items()),
              ElementsAre("calendar/meeting.ics Meeting", "contacts/people.vcf Berg, Anna",
                          "contacts/people.vcf Tal, Bert", "tasks/buy.ICS Buy milk"));
  EXPECT_EQ(desk.Items()[2].line, 7u);
  EXPECT_EQ(contents.filesRead, 3u);
  EXPECT_THAT(contents.notices, IsEmpty());
}

TEST(DeskFolder, TakesAnItemForWhatItIsWhereverItStands) {
  const DeskFolderTest desk;
  desk.Write("calendar/buy.ics", Calendar(kTodo));
  desk.Write("tasks/meeting.ics", Calendar(kMeeting));
  const std::vector<DeskItem> items = desk.Items();
  ASSERT_EQ(items.size(), 2u);
  EXPECT_EQ(KindOf(items[0].item), ItemKind::kTask);
  EXPECT_EQ(KindOf(items[1].item), ItemKind::kAppointment);
}

TEST(DeskFolder, SkipsHiddenAndTemporaryFilesAndThoseOfOtherKinds) {
  const DeskFolderTest desk;
  for (const char* name :
       {".anna.vcf", "anna.vcf~", "anna.vcf.tmp", "anna.ics", "color", "#a.vcf#"}) {
    desk.Write(fs::path("contacts") / name, kAnna);
  }
  const DeskContents contents = desk.Contents();
  EXPECT_THAT(contents.files, IsEmpty());
  EXPECT_THAT(contents.notices, IsEmpty());
}

TEST(DeskFolder, IsEmptyWithoutItsSubfolders) {
  const corvane::testing::TemporaryDirectory directory;
  const DeskFolder folder(directory / "new", Berlin());
  EXPECT_THAT(folder.Read({}, {}).files, IsEmpty());
  folder.Make();
  EXPECT_TRUE(fs::is_directory(directory / "new/contacts"));
  EXPECT_TRUE(fs::is_directory(directory / "new/calendar"));
  EXPECT_TRUE(fs::is_directory(directory / "new/tasks"));
}

TEST(DeskFolder, ReadsTheAskedPartsAloneAndKeepsWhatIsKnownOfOthers) {
  DeskFolderTest desk;
  desk.Write("contacts/anna.vcf", kAnna);
  desk.Write("calendar/meeting.ics", Calendar(kMeeting));
  EXPECT_EQ(desk.folder.Read({true, false}, {}).files.size(), 1u);
  desk.known = desk.Contents().files;
  fs::remove(desk / "calendar/meeting.ics");
  const DeskContents contents = desk.folder.Read({true, false}, desk.known);
  EXPECT_TRUE(contents.files.contains("calendar/meeting.ics"));
}

TEST(DeskFolder, ReadsAFileAgainOnlyWhenItsStampIsAnother) {
  DeskFolderTest desk;
  desk.Write("contacts/anna.vcf", kAnna);
  desk.Write("contacts/bert.vcf", kBert);
  desk.known = desk.Contents().files;
  EXPECT_EQ(desk.Contents().filesRead, 0u);
  EXPECT_EQ(desk.Items().size(), 2u);
  // Of the same size, and put back to the same time.
  const auto time = fs::last_write_time(desk / "contacts/bert.vcf");
  desk.Write("contacts/bert.vcf", Card("bert", "FN:Bert Hut\r\nN:Hut;Bert;;;\r\n"));
  fs::last_write_time(desk / "contacts/bert.vcf", time);
  EXPECT_EQ(desk.Contents().filesRead, 1u);
  EXPECT_EQ(DisplayName(desk.Items()[1].item), "Hut, Bert");
}

TEST(DeskFolder, ReadsAFileAgainThatWasChangedJustBeforeItWasRead) {
  const DeskFolderTest desk;
  desk.Write("contacts/anna.vcf", kAnna);
  const DeskFolder folder(desk.path(), Berlin());
  const DeskFiles known = folder.Read({}, {}).files;
  EXPECT_EQ(known.at("contacts/anna.vcf").stamp, "");
  EXPECT_EQ(folder.Read({}, known).filesRead, 1u);
}

TEST(DeskFolder, KeepsTheItemsOfAFileThatCannotBeRead) {
  DeskFolderTest desk;
  desk.Write("contacts/anna.vcf", kAnna);
  desk.known = desk.Contents().files;
  for (const std::string& torn : {std::string(), kAnna.substr(0, kAnna.size() - 8)}) {
    desk.Write("contacts/anna.vcf", torn);
    const DeskContents contents = desk.Contents();
    const DeskFile& file = contents.files.at("contacts/anna.vcf");
    EXPECT_FALSE(file.readable);
    ASSERT_EQ(file.items.size(), 1u);
    EXPECT_EQ(DisplayName(file.items[0].item), "Berg, Anna");
    EXPECT_THAT(Texts(contents.notices),
                ElementsAre("contacts/anna.vcf: empty or cut off, left alone"));
  }
}

TEST(DeskFolder, TakesAFileThatAnotherProgramEndedWithASignOfItsOwn) {
  const DeskFolderTest desk;
  desk.Write("contacts/anna.vcf", kAnna + "\r\n \x1A");
  EXPECT_EQ(DisplayName(desk.Only().item), "Berg, Anna");
}

TEST(DeskFolder, LeavesLinksAndWhatIsNoFileAlone) {
  const DeskFolderTest desk;
  desk.Write("outside.vcf", kAnna);
  fs::create_symlink(desk / "outside.vcf", desk / "contacts/link.vcf");
  fs::create_directory(desk / "contacts/folder.vcf");
  ASSERT_EQ(::mkfifo((desk / "contacts/pipe.vcf").c_str(), 0600), 0);
  EXPECT_THAT(desk.Items(), IsEmpty());
  EXPECT_THAT(Texts(desk.Contents().notices),
              ElementsAre("contacts/folder.vcf: not a file, left alone",
                          "contacts/link.vcf: a link, left alone",
                          "contacts/pipe.vcf: not a file, left alone"));
}

TEST(DeskFolder, RefusesASubfolderThatIsALink) {
  const DeskFolderTest desk;
  fs::remove(desk / "contacts");
  fs::create_directory(desk / "elsewhere");
  fs::create_directory_symlink(desk / "elsewhere", desk / "contacts");
  EXPECT_THROW(desk.Contents(), files::Error);
  EXPECT_THROW(desk.folder.Add(Named("a", "Anna")), files::Error);
  EXPECT_THAT(desk.Names("elsewhere"), IsEmpty());
}

TEST(DeskFolder, RefusesToEditWhatIsNoFileOfIts) {
  const DeskFolderTest desk;
  desk.Write("outside.vcf", kAnna);
  for (const char* file : {"contacts/../outside.vcf", "outside.vcf", "contacts/..", "/etc/passwd",
                           ".corvane/map.json"}) {
    const DeskItem item{file, 1, "contact:anna", Named("anna", "Anna")};
    EXPECT_THROW(desk.folder.Change(item, Named("anna", "Berta")), files::Error) << file;
    EXPECT_THROW(desk.folder.Remove(item, desk.trash), files::Error) << file;
  }
  EXPECT_EQ(desk.Read("outside.vcf"), kAnna);
}

TEST(DeskFolder, AddsEachItemAsAFileNamedAfterItsUid) {
  const DeskFolderTest desk;
  Appointment appointment;
  appointment.uid = "meet@example.org";
  appointment.start = appointment.end = formats::local_days{std::chrono::year(2026) / 11 / 22};
  Task task;
  task.uid = "urn:uuid:4fbe8971-0bc3-424c-9c26-36c3e1eff6b1";
  task.subject = "Buy milk";
  for (const Item& item : {Item(Named("anna", "Anna")), Item(appointment), Item(task)}) {
    const DeskOutcome outcome = desk.folder.Add(item);
    EXPECT_FALSE(outcome.refused);
    EXPECT_EQ(outcome.item.item, item);
  }
  EXPECT_THAT(desk.Names(""), ElementsAre("calendar/meet@example.org.ics", "contacts/anna.vcf",
                                          "tasks/4fbe8971-0bc3-424c-9c26-36c3e1eff6b1.ics"));
}

TEST(DeskFolder, AddsWithKeysThatTheNextReadingGivesAsWell) {
  const DeskFolderTest desk;
  const DeskOutcome outcome = desk.folder.Add(Named("anna", "Anna"));
  EXPECT_EQ(desk.Only().key, outcome.item.key);
  EXPECT_EQ(desk.Only().line, outcome.item.line);
  EXPECT_EQ(desk.Only().file, outcome.item.file);
}

TEST(DeskFolder, NeverAddsOverAFile) {
  const DeskFolderTest desk;
  desk.Write("contacts/anna.vcf", kAnna);
  EXPECT_EQ(desk.folder.Add(Named("anna", "Other")).item.file, "contacts/anna-2.vcf");
  EXPECT_EQ(desk.Read("contacts/anna.vcf"), kAnna);
}

TEST(DeskFolder, MakesNamesOfHostileUids) {
  const DeskFolderTest desk;
  const std::string uids[] = {
      "../x",    "..",  ".",    "/etc/passwd",         std::string("a\0b", 3),
      ".hidden", "-rf", "a\nb", std::string(300, 'x'), "C:\\x"};
  for (const std::string& uid : uids) {
    const DeskOutcome outcome = desk.folder.Add(Named(uid, "Anna"));
    EXPECT_EQ(outcome.item.file.parent_path(), "contacts") << uid;
    EXPECT_LT(outcome.item.file.filename().string().size(), 130u);
  }
  EXPECT_EQ(desk.Names("").size(), std::size(uids));
  EXPECT_EQ(desk.Names("contacts").size(), std::size(uids));
  EXPECT_EQ(desk.Items().size(), std::size(uids));
}

TEST(DeskFolder, RefusesToAddWhatNoFileCanSay) {
  const DeskFolderTest desk;
  Appointment appointment;
  appointment.uid = "odd";
  appointment.subject = "Without a start";
  const DeskOutcome outcome = desk.folder.Add(appointment);
  EXPECT_TRUE(outcome.refused);
  EXPECT_THAT(outcome.losses, ElementsAre(HasSubstr("an event needs a start")));
  EXPECT_THAT(desk.Names(""), IsEmpty());
}

TEST(DeskFolder, ChangesAnItemWithinItsFileAndKeepsTheFilesMode) {
  const DeskFolderTest desk;
  desk.Write("contacts/people.vcf", kAnna + kBert);
  ASSERT_EQ(::chmod((desk / "contacts/people.vcf").c_str(), 0640), 0);
  DeskItem bert = desk.Items()[1];
  Contact to = std::get<Contact>(bert.item);
  to[ContactField::kBody] = "note";
  const DeskOutcome outcome = desk.folder.Change(bert, to);
  EXPECT_EQ(outcome.item.item, Item(to));
  EXPECT_EQ(outcome.item.line, 7u);
  EXPECT_EQ(desk.Read("contacts/people.vcf"),
            kAnna + Card("bert", "FN:Bert Tal\r\nN:Tal;Bert;;;\r\nNOTE:note\r\n"));
  struct stat status {};
  ASSERT_EQ(::stat((desk / "contacts/people.vcf").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0640u);
}

TEST(DeskFolder, RefusesToChangeWhatIsNoLongerAsItWasRead) {
  const DeskFolderTest desk;
  desk.Write("contacts/anna.vcf", kAnna);
  const DeskItem anna = desk.Only();
  const std::string later = Card("anna", "FN:Anna Hut\r\nN:Hut;Anna;;;\r\n");
  desk.Write("contacts/anna.vcf", later);
  EXPECT_THROW(desk.folder.Change(anna, Named("anna", "Berta")), FileChanged);
  EXPECT_THROW(desk.folder.Remove(anna, desk.trash), FileChanged);
  EXPECT_EQ(desk.Read("contacts/anna.vcf"), later);
  EXPECT_THAT(desk.Names(".corvane"), IsEmpty());
}

TEST(DeskFolder, ChangesAnItemOfWhichOtherThingsWereChangedSince) {
  const DeskFolderTest desk;
  desk.Write("contacts/people.vcf", kBert);
  const DeskItem bert = desk.Only();
  desk.Write("contacts/people.vcf",
             kAnna + Card("bert", "FN:Bert Tal\r\nN:Tal;Bert;;;\r\nX-A:1\r\n"));
  Contact to = std::get<Contact>(bert.item);
  to[ContactField::kBody] = "note";
  EXPECT_EQ(desk.folder.Change(bert, to).item.line, 7u);
  EXPECT_EQ(desk.Read("contacts/people.vcf"),
            kAnna + Card("bert", "FN:Bert Tal\r\nN:Tal;Bert;;;\r\nX-A:1\r\nNOTE:note\r\n"));
}

TEST(DeskFolder, RemovesAFileToTheTrashUnderItsName) {
  const DeskFolderTest desk;
  desk.Write("contacts/anna.vcf", kAnna);
  desk.folder.Remove(desk.Only(), desk.trash);
  EXPECT_THAT(desk.Names(""), ElementsAre(".corvane/trash/contacts/anna.vcf"));
  EXPECT_EQ(desk.Read(".corvane/trash/contacts/anna.vcf"), kAnna);
}

TEST(DeskFolder, NeverOverwritesInTheTrash) {
  const DeskFolderTest desk;
  for (const std::string& card : {kAnna, Card("anna", "FN:Anna Hut\r\n"), kAnna}) {
    desk.Write("contacts/anna.vcf", card);
    desk.folder.Remove(desk.Only(), desk.trash);
  }
  EXPECT_THAT(desk.Names(".corvane"), ElementsAre(".corvane/trash/contacts/anna-2.vcf",
                                                  ".corvane/trash/contacts/anna-3.vcf",
                                                  ".corvane/trash/contacts/anna.vcf"));
  EXPECT_EQ(desk.Read(".corvane/trash/contacts/anna-2.vcf"), Card("anna", "FN:Anna Hut\r\n"));
}

TEST(DeskFolder, RemovesAnItemFromAmongOthersToAFileOfItsOwnInTheTrash) {
  const DeskFolderTest desk;
  desk.Write("contacts/people.vcf", kAnna + kBert);
  desk.folder.Remove(desk.Items()[0], desk.trash);
  EXPECT_EQ(desk.Read("contacts/people.vcf"), kBert);
  EXPECT_EQ(desk.Read(".corvane/trash/contacts/anna.vcf"), kAnna);

  const std::string other = Event("other", "DTSTART:20261123T090000\r\nSUMMARY:Other\r\n");
  desk.Write("calendar/all.ics", Calendar(kMeeting + other));
  desk.folder.Remove(desk.Items()[0], desk.trash);
  EXPECT_EQ(desk.Read("calendar/all.ics"), Calendar(other));
  EXPECT_EQ(desk.Read(".corvane/trash/calendar/meet.ics"), Calendar(kMeeting));
}

TEST(DeskFolder, EditsAFileOnceForAllItsItems) {
  const DeskFolderTest desk;
  desk.Write("contacts/people.vcf",
             kAnna + kBert + Card("carl", "FN:Carl Ort\r\nN:Ort;Carl;;;\r\n"));
  const std::vector<DeskItem> items = desk.Items();
  Contact to = std::get<Contact>(items[2].item);
  to[ContactField::kBody] = "note";
  const DeskEdit edits[] = {{items[2], to}, {items[0], std::nullopt}};
  const std::vector<DeskOutcome> outcomes = desk.folder.Edit(edits, desk.trash);
  EXPECT_EQ(outcomes[0].item.item, Item(to));
  EXPECT_EQ(outcomes[0].item.line, 7u);
  EXPECT_FALSE(outcomes[1].refused);
  EXPECT_EQ(desk.Read("contacts/people.vcf"),
            kBert + Card("carl", "FN:Carl Ort\r\nN:Ort;Carl;;;\r\nNOTE:note\r\n"));
}

TEST(DeskFolder, KnowsAnItemByItsUidInAnyFile) {
  DeskFolderTest desk;
  desk.Write("contacts/anna.vcf", kAnna);
  desk.known = desk.Contents().files;
  fs::rename(desk / "contacts/anna.vcf", desk / "contacts/renamed.vcf");
  EXPECT_EQ(desk.Only().file, "contacts/renamed.vcf");
  EXPECT_EQ(desk.Only().key, desk.known.at("contacts/anna.vcf").items[0].key);
}

TEST(DeskFolder, KnowsAnItemWithoutAUidByItsContentOrNameOrAsTheOneOfItsFile) {
  DeskFolderTest desk;
  desk.Write("contacts/people.vcf", Card("", "N:Berg;Anna;;;\r\n") + Card("", "N:Tal;Bert;;;\r\n"));
  desk.Write("contacts/one.vcf", Card("", "N:Ort;Carl;;;\r\n"));
  desk.known = desk.Contents().files;
  const std::vector<std::string> keys = KeysOf(desk.Items());
  EXPECT_EQ(std::get<Contact>(desk.Items()[0].item).uid, "");

  desk.Write("contacts/people.vcf", Card("", "N:Neu;Doris;;;\r\n") +
                                        Card("", "N:Tal;Bert;;;\r\nNOTE:note\r\n") +
                                        Card("", "N:Berg;Anna;;;\r\n"));
  desk.Write("contacts/one.vcf", Card("", "N:Fort;Karl;;;\r\n"));
  const std::vector<std::string> now = KeysOf(desk.Items());
  ASSERT_EQ(now.size(), 4u);
  EXPECT_EQ(now[0], keys[0]);  // the one of its file
  EXPECT_EQ(now[3], keys[1]);  // the same content
  EXPECT_EQ(now[2], keys[2]);  // the same name
  EXPECT_THAT(keys, ::testing::Not(::testing::Contains(now[1])));

  fs::rename(desk / "contacts/one.vcf", desk / "contacts/zero.vcf");
  desk.Write("contacts/zero.vcf", Card("", "N:Ort;Carl;;;\r\n"));
  EXPECT_EQ(KeysOf(desk.Items())[3], keys[0]);
}

TEST(DeskFolder, KnowsAnItemThatWasGivenAUid) {
  DeskFolderTest desk;
  desk.Write("contacts/people.vcf", Card("", "N:Berg;Anna;;;\r\n") + Card("", "N:Tal;Bert;;;\r\n"));
  desk.known = desk.Contents().files;
  const std::vector<std::string> keys = KeysOf(desk.Items());
  desk.Write("contacts/people.vcf",
             Card("1", "N:Berg;Anna;;;\r\nNOTE:note\r\n") + Card("2", "N:Tal;Bert;;;\r\n"));
  EXPECT_EQ(KeysOf(desk.Items()), keys);
  desk.known = desk.Contents().files;
  EXPECT_EQ(KeysOf(desk.Items()), keys);
}

TEST(DeskFolder, LeavesTheSecondOfTwoItemsWithOneUidAlone) {
  DeskFolderTest desk;
  desk.Write("contacts/b.vcf", kAnna);
  desk.known = desk.Contents().files;
  desk.Write("contacts/a.vcf", kAnna + kBert);
  const DeskContents contents = desk.Contents();
  EXPECT_THAT(NamesOf(desk.Items()),
              ElementsAre("contacts/a.vcf Tal, Bert", "contacts/b.vcf Berg, Anna"));
  EXPECT_THAT(Texts(contents.notices),
              ElementsAre("contacts/a.vcf:1: UID: anna stands in contacts/b.vcf:1, too; this one "
                          "is left alone"));
  // Once the other one is gone, it takes its place.
  desk.known = contents.files;
  fs::remove(desk / "contacts/b.vcf");
  EXPECT_THAT(NamesOf(desk.Items()),
              ElementsAre("contacts/a.vcf Berg, Anna", "contacts/a.vcf Tal, Bert"));
  EXPECT_EQ(desk.Items()[0].key, "contact:anna");
}

TEST(DeskFolder, TellsWhatTheReaderCouldNotKeep) {
  const DeskFolderTest desk;
  desk.Write("contacts/anna.vcf", Card("anna", "N:Berg;Anna;;;\r\nNICKNAME:Nan\r\n"));
  const DeskContents contents = desk.Contents();
  ASSERT_EQ(contents.notices.size(), 1u);
  EXPECT_EQ(contents.notices[0].trouble, DeskTrouble::kContent);
  EXPECT_EQ(ToText(contents.notices[0]),
            "contacts/anna.vcf:5: NICKNAME: a contact has no field for a nickname");
}

}  // namespace
}  // namespace desktop::testing
