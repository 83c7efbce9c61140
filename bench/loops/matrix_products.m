A = [1 0; 0 1];
for k = 1:5
  A = [A A; A A];
end
A = A(1:50, 1:50) / 50;
B = A;
for i = 1:2000
  B = A * B + A;
end
disp(B(1, 1));
