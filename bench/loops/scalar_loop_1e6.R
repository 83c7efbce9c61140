f <- function() {
  s <- 0
  for (i in 1:1000000) s <- s + i * 0.5
  s
}
print(compiler::cmpfun(f)())
