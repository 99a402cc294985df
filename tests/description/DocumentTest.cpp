#include "DescriptionSupport.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>

using description_test::TemporaryFile;

namespace {

class Document {
public:
  explicit Document(std::string const& xml) : file(xml), handle(xml_file_create()) {
    isOpen = xml_file_open(handle, file.path(), 1);
  }
  ~Document() { xml_file_destroy(handle); }
  Document(Document const&) = delete;
  Document& operator=(Document const&) = delete;

  _XmlNode* root() const { return xml_file_get_root(handle); }
  _XmlNode* child(int index, char const* name = nullptr) const {
    return xml_file_get_child_node(index, root(), name);
  }

  TemporaryFile file;
  xml_file_handle* handle;
  bool isOpen;
};

} // namespace

TEST(Document, TextIsThatOfTheDirectChildrenTrimmed) {
  Document const document(
      "<?xml version=\"1.0\"?><!DOCTYPE a [<!ENTITY e \"ent\">]><a> \n"
      "<b>  text\n </b><b> \t </b><b/><b>x<i> z </i>y</b><b> p<!-- c --> <![CDATA[ <q ]]> </b>"
      "<b k=\" v&amp;&e; \"> &lt;&e;&#x41; </b><?pi?></a>");
  ASSERT_TRUE(document.isOpen);
  char const* const expected[] = {"text", "", "", "xy", "p  <q", "<entA"};
  ASSERT_EQ(xml_file_get_child_count(document.root(), ""), 6);
  for (int index = 0; index < 6; ++index) {
    EXPECT_EQ(document.child(index)->value, expected[index]);
  }
  EXPECT_EQ(document.root()->value, "");
  EXPECT_EQ(xml_file_get_child_count(document.child(3), nullptr), 1);
  EXPECT_EQ(document.child(5)->attributes[0].value, " v&ent ");
}

TEST(Document, ChildrenAndAttributesAreFoundByIndexAndName) {
  Document const document("<a xmlns:n='u' n:k='1' k='2' m='3'><X i='0'/> t <Y/><X i='1'/><x/></a>");
  EXPECT_EQ(document.child(1, "X")->attributes[0].value, "1");
  EXPECT_EQ(document.child(1)->name, "Y");
  EXPECT_EQ(document.child(2, "X"), nullptr);
  EXPECT_EQ(document.child(-1), nullptr);
  EXPECT_EQ(xml_file_get_child_count(document.root(), "X"), 2);
  EXPECT_EQ(xml_file_get_child_count(nullptr, "X"), 0);
  std::string visited;
  for (_XmlNode* node : xml_file_children(document.root(), "X")) {
    visited += node->attributes[0].value;
  }
  EXPECT_EQ(visited, "01");

  EXPECT_EQ(xml_file_get_attribute_count(document.root()), 3);
  char text[8];
  unsigned long size = sizeof(text);
  ASSERT_TRUE(xml_file_get_attribute_value_by_index(1, document.root(), text, size));
  EXPECT_STREQ(text, "1") << "a value is looked up by local name: the first one is meant";
  size = sizeof(text);
  ASSERT_TRUE(xml_file_get_attribute_value("m", document.root(), text, size));
  EXPECT_STREQ(text, "3");
  size = 5;
  EXPECT_FALSE(xml_file_get_attribute_value("M", document.root(), text, size));
  EXPECT_FALSE(xml_file_get_attribute_name(3, document.root(), text, size));
  EXPECT_FALSE(xml_file_get_attribute_name(0, document.child(1), text, size));
  EXPECT_EQ(size, 5U);
}

TEST(Document, StringGettersFollowTheSizeProtocol) {
  Document const document("<name>value</name>");
  char text[8] = "before";
  unsigned long size = 1;
  EXPECT_TRUE(xml_file_get_node_value(document.root(), nullptr, size) && size == 6);
  size = 5;
  EXPECT_FALSE(xml_file_get_node_value(document.root(), text, size) || size != 5);
  EXPECT_STREQ(text, "before");
  size = 6;
  EXPECT_TRUE(xml_file_get_node_value(document.root(), text, size));
  EXPECT_STREQ(text, "value");
  size = 8;
  EXPECT_TRUE(xml_file_get_node_name(document.root(), text, size) && size == 5);
  EXPECT_FALSE(xml_file_get_node_name(nullptr, text, size));
}

TEST(Document, OpeningReplacesReportsAndNeverWrites) {
  Document document("<a>1</a>");
  TemporaryFile const empty("");
  TemporaryFile const broken("<a><b></a>");
  std::string const before = document.file.content();
  testing::internal::CaptureStdout();
  EXPECT_FALSE(xml_file_open(document.handle, "/nowhere/at all", 1));
  EXPECT_EQ(document.root(), nullptr) << "the old document was closed first";
  EXPECT_FALSE(xml_file_open(document.handle, broken.path(), 1));
  EXPECT_FALSE(xml_file_open(nullptr, broken.path(), 1));
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "Open file error,the file maybe not exist:/nowhere/at all\nParser xml error:" +
                std::string(broken.path()) + "\n");
  EXPECT_TRUE(xml_file_open(document.handle, empty.path(), 1));
  EXPECT_EQ(document.root(), nullptr);
  EXPECT_FALSE(xml_file_remove_all(document.handle));
  EXPECT_TRUE(xml_file_open(document.handle, document.file.path(), 1));
  EXPECT_TRUE(xml_file_remove_all(document.handle));
  xml_file_close(document.handle);
  EXPECT_EQ(document.file.content(), before);
}

TEST(Document, APathIsThatOfAPlainFileWhateverItLooksLike) {
  namespace fs = std::filesystem;
  TemporaryFile const name("");
  std::string const folder = std::string(name.path()) + ".folder";
  fs::path const before = fs::current_path();
  fs::create_directories(folder + "/http:/host");
  fs::create_directories(folder + "/file:/");
  fs::current_path(folder);
  xml_file_handle* handle = xml_file_create();
  for (char const* path : {"http://host/a", "http:/host/b", "file:///c", "-", "%2d"}) {
    std::ofstream(path) << "<a k='" << path << "'/>";
    ASSERT_TRUE(xml_file_open(handle, path, 1)) << path;
    EXPECT_EQ(xml_file_get_root(handle)->attributes[0].value, path);
  }
  std::ofstream("gzip", std::ios::binary)
      << std::string("\x1f\x8b\x08\0\0\0\0\0\x02\x03\xb3\x49\xd4\xb7\x03\0\xd4\x1c\xd1\x01\x04\0\0\0", 24);
  mkfifo("pipe", 0600);
  int const writer = open("pipe", O_RDWR | O_CLOEXEC); /* so that a reader is not held */
  testing::internal::CaptureStdout();
  for (char const* path : {"gzip", "pipe", "/dev/null", "."}) {
    EXPECT_FALSE(xml_file_open(handle, path, 1)) << path;
  }
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "Parser xml error:gzip\nOpen file error,the file maybe not exist:pipe\n"
            "Open file error,the file maybe not exist:/dev/null\nParser xml error:.\n");
  close(writer);
  xml_file_destroy(handle);
  fs::current_path(before);
  fs::remove_all(folder);
}
