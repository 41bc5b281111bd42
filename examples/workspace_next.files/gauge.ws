 0 @fallen SET

 NILADIC
   
   fallen
   days / FUNCTIONEND
 @mean SET

 MONADIC
   
   fallen + @fallen SET
   days 1 + @days SET FUNCTIONEND
 @measured SET
 0 @days SET
.
.
