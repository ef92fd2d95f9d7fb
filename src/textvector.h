// TextVector is the line container of the whole program: an ordered list of
// NUL-terminated strings, each in its own malloc'ed block that the vector owns.
// A char* read out of a vector is borrowed: it dies when its element is removed or
// replaced, or when the vector is cleared, assigned or destroyed. TextFile adds
// reading and writing of plain text files; FileList and ScriptRunner derive from it.
#ifndef ZET_TEXTVECTOR_H
#define ZET_TEXTVECTOR_H

#include <functional>
#include <string_view>
#include <vector>

// Ordered list of owned C strings; duplicates and empty strings are kept as given.
class TextVector {
 public:
  TextVector() = default;
  TextVector(const TextVector& other);
  ~TextVector();

  // Always true. There is no self-assignment test: assigning a vector to itself empties it.
  bool operator=(const TextVector& other);

  unsigned size() const { return static_cast<unsigned>(items.size()); }
  char* operator[](unsigned index) const { return items[index]; }
  std::vector<char*>::const_iterator begin() const { return items.begin(); }
  std::vector<char*>::const_iterator end() const { return items.end(); }

  // Appends a copy of the first `length` bytes of `text` (NUL-padded when shorter).
  void push_back(const char* text, unsigned int length);
  void push_back(const char* text);
  void pop_back();
  void clear();

  // Appends the non-empty tokens of `text` between `delimiter`s; does not clear first, so
  // repeated calls accumulate.
  void split(char delimiter, const char* text);
  // Removes the element at `index` by rebuilding the vector; an index outside changes nothing
  // but the addresses of the strings.
  void erase(int index);
  // Index of the first element equal to `text` as a whole, or -1.
  int find(const char* text) const;
  // Replaces element `index` by a copy without any `character`.
  void removeChar(char character, int index);
  // The elements of `a`, in order and with duplicates, that do not stand in `b`.
  static TextVector difference(const TextVector& a, const TextVector& b);
  // Drops every element that stands in `other`; always true.
  bool removeAll(const TextVector& other);

 private:
  std::vector<char*> items;
};

// A TextVector that can be loaded from and saved to a text file, one element a line.
class TextFile : public TextVector {
 public:
  TextFile() = default;
  // Empty, then load(path) with the result ignored.
  explicit TextFile(const char* path);
  TextFile(const TextVector& other) : TextVector(other) {}

  // Replaces the content with the lines of the file. A line over 1023 characters arrives in
  // pieces; CR LF ends are understood. False, with the vector empty, when the file won't open.
  bool load(const char* path);
  // Hands each line of the file to `visit` exactly as load() would deliver it, without a copy;
  // a view lives only during its call. False when the file won't open.
  static bool forEachLine(const char* path, const std::function<void(std::string_view)>& visit);
  // The same for text in memory, cut exactly as a file of that content would be.
  static void forEachLineOf(std::string_view content,
                            const std::function<void(std::string_view)>& visit);
  // Writes each element and a line feed. False when `overwrite` is false and the file exists,
  // or when it cannot be opened.
  bool save(const char* path, bool overwrite) const;
  // True when the path opens for reading (a directory does).
  static bool fileExists(const char* path);
  unsigned length(int index) const;
};

#endif
