/* The floor of one package removal on "/": the least work that this database layout
 * allows, done by hand in one process.
 *
 *   floor-remove FULLNAME
 *
 * It does what the removal has to do and nothing more: read the package's record and
 * stored doinst script, read every other record and every other stored script once
 * (the database has no index, so that is unavoidable), keep the package's own file
 * lines and link names in a hash set and look each line of the others up in it, then
 * delete the links and files nobody else names (files from the last to the first, so
 * that directories go after their contents) and the package's database files.
 * No messages are printed. */
#define _GNU_SOURCE
#include <dirent.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

typedef struct {
  char **keys;
  unsigned char *shared;
  size_t cap;
} Set;

static size_t hash(const char *s) {
  size_t h = 1469598103934665603ull;
  while (*s) h = (h ^ (unsigned char)*s++) * 1099511628211ull;
  return h;
}

static long slot(Set *set, const char *key, int insert) {
  size_t i = hash(key) & (set->cap - 1);
  while (set->keys[i]) {
    if (strcmp(set->keys[i], key) == 0) return (long)i;
    i = (i + 1) & (set->cap - 1);
  }
  if (!insert) return -1;
  set->keys[i] = strdup(key);
  return (long)i;
}

static void set_init(Set *set, size_t n) {
  set->cap = 16;
  while (set->cap < n * 2) set->cap <<= 1;
  set->keys = calloc(set->cap, sizeof *set->keys);
  set->shared = calloc(set->cap, 1);
}

/* Lines of a record after "FILE LIST:", or link paths of a stored script. */
typedef struct {
  char **v;
  size_t n, cap;
} List;

static void push(List *l, const char *s) {
  if (l->n == l->cap) {
    l->cap = l->cap ? l->cap * 2 : 256;
    l->v = realloc(l->v, l->cap * sizeof *l->v);
  }
  l->v[l->n++] = strdup(s);
}

static void chomp(char *s) {
  size_t n = strlen(s);
  if (n && s[n - 1] == '\n') s[n - 1] = 0;
}

/* Calls fn for each file line of a record. */
static void each_file(const char *path, void (*fn)(const char *, void *), void *arg) {
  FILE *f = fopen(path, "r");
  if (!f) return;
  char *line = NULL;
  size_t cap = 0;
  int in_list = 0;
  while (getline(&line, &cap, f) >= 0) {
    chomp(line);
    if (in_list)
      fn(line, arg);
    else if (strcmp(line, "FILE LIST:") == 0)
      in_list = 1;
  }
  free(line);
  fclose(f);
}

/* Calls fn for each "( cd DIR ; rm -rf LINK )" line of a stored script, as DIR/LINK. */
static void each_link(const char *path, void (*fn)(const char *, void *), void *arg) {
  FILE *f = fopen(path, "r");
  if (!f) return;
  char *line = NULL;
  size_t cap = 0;
  char dir[1025], link[1025], joined[2100];
  while (getline(&line, &cap, f) >= 0) {
    dir[0] = link[0] = 0;
    sscanf(line, "( cd %1024s ; rm -rf %1024s )", dir, link);
    if (dir[0] && link[0]) {
      snprintf(joined, sizeof joined, "%s/%s", dir, link);
      fn(joined, arg);
    }
  }
  free(line);
  fclose(f);
}

static void add_to_list(const char *s, void *l) { push(l, s); }

static void mark(const char *s, void *set) {
  long i = slot(set, s, 0);
  if (i >= 0) ((Set *)set)->shared[i] = 1;
}

static void remove_path(const char *rel) {
  char path[4200];
  snprintf(path, sizeof path, "/%s", rel);
  struct stat st;
  if (stat(path, &st) == 0 && S_ISDIR(st.st_mode))
    rmdir(path);
  else
    unlink(path);
}

int main(int argc, char **argv) {
  if (argc != 2) {
    fprintf(stderr, "usage: floor-remove FULLNAME\n");
    return 2;
  }
  const char *own = argv[1];
  char path[4200];
  List files = {0}, links = {0};
  snprintf(path, sizeof path, "/var/log/packages/%s", own);
  each_file(path, add_to_list, &files);
  snprintf(path, sizeof path, "/var/log/scripts/%s", own);
  each_link(path, add_to_list, &links);

  Set fset, lset;
  set_init(&fset, files.n);
  set_init(&lset, links.n);
  for (size_t i = 0; i < files.n; i++) slot(&fset, files.v[i], 1);
  for (size_t i = 0; i < links.n; i++) slot(&lset, links.v[i], 1);

  DIR *d = opendir("/var/log/packages");
  struct dirent *e;
  while (d && (e = readdir(d))) {
    if (e->d_name[0] == '.' || strcmp(e->d_name, own) == 0) continue;
    snprintf(path, sizeof path, "/var/log/packages/%s", e->d_name);
    each_file(path, mark, &fset);
    if (links.n) {
      snprintf(path, sizeof path, "/var/log/scripts/%s", e->d_name);
      each_link(path, mark, &lset);
    }
  }
  if (d) closedir(d);

  for (size_t i = 0; i < links.n; i++)
    if (!lset.shared[slot(&lset, links.v[i], 0)]) {
      snprintf(path, sizeof path, "/%s", links.v[i]);
      unlink(path);
    }
  for (size_t i = files.n; i-- > 0;) {
    if (files.v[i][0] == '.' || fset.shared[slot(&fset, files.v[i], 0)]) continue;
    remove_path(files.v[i]);
  }
  static const char *dbdirs[] = {"deps", "build", "scripts", "postinst", "packages"};
  for (size_t i = 0; i < 5; i++) {
    snprintf(path, sizeof path, "/var/log/%s/%s", dbdirs[i], own);
    unlink(path);
  }
  return 0;
}
