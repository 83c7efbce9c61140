s = 0;
for i = 1:1000000
  s = s + i * 0.5;
end
disp(s);
