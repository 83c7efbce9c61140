addhalf <- function(x) x + 0.5
f <- function() {
  s <- 0
  for (i in 1:100000) s <- addhalf(s)
  s
}
print(compiler::cmpfun(f)())
