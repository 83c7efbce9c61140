n = 0;
s = 0;
while (n < 1000000 && s > -1)
  n = n + 1;
  s = s + n / 3;
end
disp(s);
