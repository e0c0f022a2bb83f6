% Octave's own tests of its linear algebra: one line a file, with how many of how many passed.
home = fullfile (OCTAVE_HOME (), "share", "octave", OCTAVE_VERSION ());
builtin = fullfile (home, "etc", "tests", "libinterp", "corefcn");
names = {"inv", "det", "svd", "lu", "chol", "qr", "eig", "hess", "schur", "pinv", "rcond", ...
         "sqrtm", "gsvd", "sylvester"};
files = [glob(fullfile (home, "m", "linear-algebra", "*.m")); ...
         cellfun(@(name) fullfile (builtin, [name ".cc-tst"]), names(:), "UniformOutput", false)];
for i = 1:numel (files)
  [passed, all] = test (files{i}, "quiet", "/dev/null");
  [~, name] = fileparts (files{i});
  printf ("%s: %d of %d\n", name, passed, all);
endfor
