#include "ENIObject/DescriptionSupport.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>

using description_test::TemporaryFile;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

namespace {

class Document : public testing::Test {
protected:
  ~Document() override { xml_file_destroy(handle); }

  _XmlNode* read(const std::string& xml) {
    EXPECT_TRUE(xml_file_open(handle, TemporaryFile(xml).path(), 1));
    return xml_file_get_root(handle);
  }

  xml_file_handle* handle = xml_file_create();
};

} // namespace

TEST_F(Document, TextIsThatOfTheDirectChildrenTrimmed) {
  const _XmlNode* const root =
      read("<?xml version=\"1.0\"?><!DOCTYPE a [<!ENTITY e \"ent\">]><a> \n"
           "<b>  text\n </b><b> \t </b><b/><b>x<i> z </i>y</b><b> p<!-- c --> <![CDATA[ <q ]]> </b>"
           "<b k=\" v&amp;&e; \"> &lt;&e;&#x41; </b><?pi?></a>");
  std::vector<std::string> texts;
  for (const _XmlNode* node : xml_file_children(root, "")) {
    texts.push_back(node->value);
  }
  EXPECT_EQ(texts, (std::vector<std::string>{"text", "", "", "xy", "p  <q", "<entA"}));
  EXPECT_EQ(root->value, "");
  EXPECT_EQ(xml_file_get_child_node(5, root, nullptr)->attributes[0].value, " v&ent ");
}

TEST_F(Document, ChildrenAndAttributesAreFoundByIndexAndNameAndTextsFitOrAreRefused) {
  const _XmlNode* const root = read("<a xmlns:n='u' n:k='1' k='2' m='3'>v<X i='0'/><Y/><X i='1'/><x/></a>");
  EXPECT_EQ(xml_file_get_child_node(1, root, "X")->attributes[0].value, "1");
  EXPECT_EQ(xml_file_get_child_node(1, root, nullptr)->name, "Y");
  EXPECT_FALSE(xml_file_get_child_node(2, root, "X") || xml_file_get_child_node(-1, root, nullptr));
  EXPECT_TRUE(xml_file_get_child_count(root, "X") == 2 && xml_file_get_child_count(nullptr, "X") == 0);

  EXPECT_EQ(xml_file_get_attribute_count(root), 3);
  char text[8] = "before";
  unsigned long size = 1;
  EXPECT_TRUE(xml_file_get_node_value(root, nullptr, size) && size == 2);
  size = 1;
  EXPECT_FALSE(xml_file_get_node_value(root, text, size) || size != 1 || text[0] != 'b') << "too small";
  size = sizeof(text);
  EXPECT_TRUE(xml_file_get_node_value(root, text, size) && size == 2 && std::string(text) == "v");
  EXPECT_TRUE(xml_file_get_attribute_value_by_index(1, root, text, size));
  EXPECT_STREQ(text, "1") << "a value is looked up by local name: the first one is meant";
  EXPECT_TRUE(xml_file_get_attribute_value("m", root, text, size) && std::string(text) == "3");
  EXPECT_TRUE(xml_file_get_node_name(root, text, size) && std::string(text) == "a");
  EXPECT_FALSE(xml_file_get_attribute_value("M", root, text, size) ||
               xml_file_get_attribute_name(3, root, text, size) ||
               xml_file_get_node_name(nullptr, text, size));
}

TEST_F(Document, OpeningReplacesReportsAndNeverWrites) {
  const TemporaryFile good("<a>1</a>");
  const TemporaryFile broken("<a><b></a>");
  EXPECT_TRUE(xml_file_open(handle, good.path(), 1));
  CaptureStdout();
  EXPECT_FALSE(xml_file_open(handle, "/nowhere/at all", 1));
  EXPECT_EQ(xml_file_get_root(handle), nullptr) << "the old document was closed first";
  EXPECT_FALSE(xml_file_open(handle, broken.path(), 1) || xml_file_open(nullptr, broken.path(), 1));
  EXPECT_EQ(GetCapturedStdout(),
            "Open file error,the file maybe not exist:/nowhere/at all\nParser xml error:" +
                std::string(broken.path()) + "\n");
  EXPECT_TRUE(read("") == nullptr && !xml_file_remove_all(handle)) << "an empty file is a new document";
  EXPECT_TRUE(xml_file_open(handle, good.path(), 1) && xml_file_remove_all(handle));
  xml_file_close(handle);
  EXPECT_EQ(good.content(), "<a>1</a>");
}

TEST_F(Document, APathIsThatOfAPlainFileWhateverItLooksLike) {
  namespace fs = std::filesystem;
  const std::string folder = std::string(TemporaryFile("").path()) + ".folder";
  const fs::path before = fs::current_path();
  fs::create_directories(folder + "/http:/host");
  fs::create_directories(folder + "/file:/");
  fs::current_path(folder);
  for (const char* path : {"http://host/a", "http:/host/b", "file:///c", "-", "%2d"}) {
    std::ofstream(path) << "<a k='" << path << "'/>";
    ASSERT_TRUE(xml_file_open(handle, path, 1)) << path;
    EXPECT_EQ(xml_file_get_root(handle)->attributes[0].value, path);
  }
  std::ofstream("gzip", std::ios::binary)
      << std::string("\x1f\x8b\x08\0\0\0\0\0\x02\x03\xb3\x49\xd4\xb7\x03\0\xd4\x1c\xd1\x01\x04\0\0\0", 24);
  mkfifo("pipe", 0600);
  const int writer = open("pipe", O_RDWR | O_CLOEXEC); // so that a reader is not held
  CaptureStdout();
  for (const char* path : {"gzip", "pipe", "/dev/null", "."}) {
    EXPECT_FALSE(xml_file_open(handle, path, 1)) << path;
  }
  EXPECT_EQ(GetCapturedStdout(), "Parser xml error:gzip\nOpen file error,the file maybe not exist:pipe\n"
                                 "Open file error,the file maybe not exist:/dev/null\nParser xml error:.\n");
  close(writer);
  fs::current_path(before);
  fs::remove_all(folder);
}
