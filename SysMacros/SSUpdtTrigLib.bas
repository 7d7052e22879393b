' SSUpdtTrigLib.bas - helper library of the update trigger, platform 1
' (Transact-SQL).
'
' The host loads this library before it runs SSUpdtTrig.bas, which names it on
' its "'#Uses" line. Its functions only build text; they write nothing. A
' relation (rel) is the object the host passes for one relationship, with
'   rel.PairCount                 number of key / foreign-key column pairs
'   rel.ParentColumn(j)           the parent's key column of pair j (1-based)
'   rel.ChildColumn(j)            the child's foreign-key column of pair j
' as described in SSUpdtTrig.bas.

Option Explicit

' [owner].[name], or [name] when the owner is empty.
Function QualifiedName(owner As String, name As String) As String
    If owner = "" Then
        QualifiedName = "[" & name & "]"
    Else
        QualifiedName = "[" & owner & "].[" & name & "]"
    End If
End Function

' "p.[k1] = c.[f1] AND p.[k2] = c.[f2]": the rows of two aliases that a
' relation pairs.
Function PairCondition(rel As Object, parentAlias As String, childAlias As String) As String
    Dim j As Integer, text As String
    For j = 1 To rel.PairCount
        If j > 1 Then text = text & " AND "
        text = text & parentAlias & ".[" & rel.ParentColumn(j) & "] = " _
                    & childAlias & ".[" & rel.ChildColumn(j) & "]"
    Next j
    PairCondition = text
End Function

' "UPDATE([k1]) OR UPDATE([k2])": the statement set a column of the relation,
' on the parent side (parentSide True) or on the child side.
Function AnyColumnUpdated(rel As Object, parentSide As Boolean) As String
    Dim j As Integer, text As String, column As String
    For j = 1 To rel.PairCount
        If parentSide Then column = rel.ParentColumn(j) Else column = rel.ChildColumn(j)
        If j > 1 Then text = text & " OR "
        text = text & "UPDATE([" & column & "])"
    Next j
    AnyColumnUpdated = text
End Function

' "c.[f1] IS NOT NULL AND c.[f2] IS NOT NULL": a child row that refers to a
' parent at all.
Function ForeignKeySet(rel As Object, childAlias As String) As String
    Dim j As Integer, text As String
    For j = 1 To rel.PairCount
        If j > 1 Then text = text & " AND "
        text = text & childAlias & ".[" & rel.ChildColumn(j) & "] IS NOT NULL"
    Next j
    ForeignKeySet = text
End Function

' Emits the statement that ends the trigger with an error; the transaction of
' the triggering statement is rolled back with it.
Sub EmitError(indent As String, message As String)
    Emit indent & "THROW 50001, N'" & Replace(message, "'", "''") & "', 1;"
End Sub
