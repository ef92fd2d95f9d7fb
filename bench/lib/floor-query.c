/* The floor of the questions of queryzet that read the whole database on "/": the least
 * work that its layout allows, done by hand in one process.
 *
 *   floor-query read | verify
 *
 * It reads every record whole into one buffer and finds the lines after "FILE LIST:", and
 * it reads every stored doinst script and finds the links of its "( cd DIR ; rm -rf LINK )"
 * lines. With "verify" it also lstat()s each of those paths, counts what is missing and
 * ends with status 1 when anything is; with "read" it only reads, which is what --owner
 * cannot do without. It prints nothing. */
#define _GNU_SOURCE
#include <dirent.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

static size_t missing;
static int verify;

static void check(const char *dir, const char *rel, size_t length) {
  char path[4200];
  struct stat st;
  if (!verify) return;
  int n = snprintf(path, sizeof path, "/%s%s%.*s", dir, *dir ? "/" : "", (int)length, rel);
  if (n > 0 && (size_t)n < sizeof path && lstat(path, &st) != 0) missing++;
}

static void check_record(const char *path) {
  static char *buffer;
  static size_t cap;
  int fd = open(path, O_RDONLY);
  if (fd < 0) return;
  struct stat st;
  size_t used = 0;
  if (fstat(fd, &st) == 0 && (size_t)st.st_size + 1 > cap) {
    cap = (size_t)st.st_size + 1;
    buffer = realloc(buffer, cap);
  }
  ssize_t got;
  while (used < cap && (got = read(fd, buffer + used, cap - used)) > 0) used += (size_t)got;
  close(fd);
  int in_list = 0;
  for (char *line = buffer, *end; line < buffer + used; line = end + 1) {
    end = memchr(line, '\n', (size_t)(buffer + used - line));
    if (!end) end = buffer + used;
    if (in_list)
      check("", line, (size_t)(end - line));
    else if ((size_t)(end - line) == 10 && memcmp(line, "FILE LIST:", 10) == 0)
      in_list = 1;
  }
}

static void check_script(const char *path) {
  FILE *f = fopen(path, "r");
  if (!f) return;
  char *line = NULL;
  size_t cap = 0;
  char dir[1025], link[1025];
  while (getline(&line, &cap, f) >= 0) {
    dir[0] = link[0] = 0;
    sscanf(line, "( cd %1024s ; rm -rf %1024s )", dir, link);
    if (dir[0] && link[0]) check(dir, link, strlen(link));
  }
  free(line);
  fclose(f);
}

int main(int argc, char **argv) {
  if (argc != 2 || (strcmp(argv[1], "read") != 0 && strcmp(argv[1], "verify") != 0)) {
    fprintf(stderr, "usage: floor-query read | verify\n");
    return 2;
  }
  verify = strcmp(argv[1], "verify") == 0;
  char path[4200];
  DIR *d = opendir("/var/log/packages");
  struct dirent *e;
  while (d && (e = readdir(d))) {
    if (e->d_name[0] == '.') continue;
    snprintf(path, sizeof path, "/var/log/packages/%s", e->d_name);
    check_record(path);
    snprintf(path, sizeof path, "/var/log/scripts/%s", e->d_name);
    check_script(path);
  }
  if (d) closedir(d);
  return missing > 0;
}
