A <- diag(2)
for (k in 1:5) A <- rbind(cbind(A, A), cbind(A, A))
A <- A[1:50, 1:50] / 50
B <- A
for (i in 1:2000) B <- A %*% B + A
print(B[1, 1])
