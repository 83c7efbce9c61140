1;
function y = addhalf(x)
  y = x + 0.5;
end
s = 0;
for i = 1:100000
  s = addhalf(s);
end
disp(s);
