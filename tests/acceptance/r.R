# R's linear algebra: what each function promises, on real and complex matrices and on all that its
# help page shows. One line a check.
options(warn = 1)
set.seed(1)

small <- function(x, scale) max(Mod(x)) < 1e-12 * scale
check <- function(name, ok) cat(name, if (isTRUE(ok)) "passed" else "FAILED", "\n")

for (kind in c("real", "complex"))
  for (n in c(1, 2, 7, 40, 150)) {
    draw <- function(m, n) {
      x <- matrix(rnorm(m * n), m, n)
      if (kind == "complex") x <- x + 1i * matrix(rnorm(m * n), m, n)
      x
    }
    named <- function(f) paste(f, kind, n)
    a <- draw(n, n)
    b <- draw(n, 3)
    check(named("solve"), small(a %*% solve(a, b) - b, n * max(Mod(solve(a, b)))))
    check(named("inverse"), small(a %*% solve(a) - diag(n), n * max(Mod(solve(a)))))
    q <- qr(a, LAPACK = TRUE)
    check(named("qr"), small(qr.Q(q) %*% qr.R(q) - a[, q$pivot], n))
    s <- svd(draw(n + 5, n) -> tall)
    check(named("svd"), small(s$u %*% (s$d * Conj(t(s$v))) - tall, n))
    hermitian <- a + Conj(t(a))
    e <- eigen(hermitian)
    check(named("eigen"), small(hermitian %*% e$vectors - e$vectors %*% diag(e$values, n), n^2))
    general <- eigen(a)
    check(named("eigen, general"),
          small(a %*% general$vectors - general$vectors %*% diag(general$values, n), n^2))
    if (kind == "real") {
      definite <- crossprod(a) + diag(n)
      r <- chol(definite)
      check(named("chol"), small(crossprod(r) - definite, n^2))
      check(named("chol2inv"), small(chol2inv(r) %*% definite - diag(n), n^2))
      check(named("determinant"),
            abs(determinant(definite)$modulus - 2 * sum(log(diag(r)))) < 1e-9 * n)
      check(named("kappa"), kappa(definite, exact = TRUE) >= 1)
    }
  }
check("singular", inherits(try(solve(matrix(1, 3, 3)), silent = TRUE), "try-error"))
check("indefinite", inherits(try(chol(diag(c(1, -1))), silent = TRUE), "try-error"))
for (topic in c("solve", "svd", "qr", "chol", "chol2inv", "eigen", "det", "kappa", "backsolve",
                "lm", "prcomp", "princomp"))
  check(paste("examples of", topic), {
    sink(nullfile())
    pdf(NULL)
    done <- try(example(topic, character.only = TRUE, ask = FALSE, run.dontrun = FALSE))
    dev.off()
    sink()
    !inherits(done, "try-error")
  })
